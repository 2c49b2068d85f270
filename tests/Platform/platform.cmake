opm_add_test(PlatformTests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/RegistryTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/RegistryHiveTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/LibraryTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/FatalErrorTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/AtomicFileTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/WindowMessagesTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ModulePathTest.cpp
  LIBS Platform Qt6::Core
  LABELS unit)

# A tiny shared object for the loader tests, placed beside the test executable.
add_library(platform_test_module SHARED ${CMAKE_CURRENT_LIST_DIR}/TestModule.cpp)
set_target_properties(platform_test_module PROPERTIES PREFIX "" OUTPUT_NAME "platform_test_module")
add_dependencies(PlatformTests platform_test_module)
