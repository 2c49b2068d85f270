# Device access: module loader, light source, device manager.

# Fake OTDR modules, each alone in a folder so that nothing mistakes one for
# the simulator's tavix_otdr.so. Tests copy them into throw-away directories.
foreach(variant full minimal)
  add_library(fake_otdr_module_${variant} SHARED ${CMAKE_CURRENT_LIST_DIR}/FakeOtdrModule.cpp)
  target_include_directories(fake_otdr_module_${variant} PRIVATE ${PROJECT_SOURCE_DIR})
  # The application's log is reached through its virtual table only, as the
  # real module does: no type information to check the calls against.
  target_compile_options(fake_otdr_module_${variant} PRIVATE -fno-sanitize=vptr)
  set_target_properties(fake_otdr_module_${variant} PROPERTIES
    PREFIX "" OUTPUT_NAME "tavix_otdr"
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/fake-module-${variant})
endforeach()
target_compile_definitions(fake_otdr_module_minimal PRIVATE FAKE_MODULE_MINIMAL)

add_library(fake_stream_driver SHARED ${CMAKE_CURRENT_LIST_DIR}/FakeStreamDriver.cpp)
target_include_directories(fake_stream_driver PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(fake_stream_driver PROPERTIES
  PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/fake-driver)

opm_add_test(PowerMeterDeviceTests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/ModuleDllTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/LightSourceConfigTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/LightSourceTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/PowerMeterDeviceManagerTest.cpp
  LIBS PowerMeter
  LABELS unit)
target_compile_definitions(PowerMeterDeviceTests PRIVATE
  FAKE_OTDR_MODULE="$<TARGET_FILE:fake_otdr_module_full>"
  FAKE_OTDR_MODULE_MINIMAL="$<TARGET_FILE:fake_otdr_module_minimal>"
  FAKE_STREAM_DRIVER="$<TARGET_FILE:fake_stream_driver>")
add_dependencies(PowerMeterDeviceTests
  fake_otdr_module_full fake_otdr_module_minimal fake_stream_driver)
