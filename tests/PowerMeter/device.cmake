# The device layer on the simulated instrument, in an image the image script
# assembles, and a fake module for a board whose InitOTDR throws.
foreach(variant standard other)
  add_library(fake_otdr_${variant} SHARED ${CMAKE_CURRENT_LIST_DIR}/FakeOtdrModule.cpp)
  set_target_properties(fake_otdr_${variant} PROPERTIES
    PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/fake-otdr)
endforeach()
target_compile_definitions(fake_otdr_other PRIVATE FAKE_MODULE_THROWS_OTHER)

opm_add_test(PowerMeterDeviceTests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/PowerMeterDeviceTest.cpp
  LIBS PowerMeter tavix_sim_bench
  LABELS unit)
target_compile_definitions(PowerMeterDeviceTests PRIVATE
  OPM_MAKE_IMAGE="${PROJECT_SOURCE_DIR}/scripts/make-image.sh" OPM_BUILD_DIR="${CMAKE_BINARY_DIR}"
  FAKE_OTDR="${CMAKE_CURRENT_BINARY_DIR}/fake-otdr/")
add_dependencies(PowerMeterDeviceTests simulator fake_otdr_standard fake_otdr_other)
