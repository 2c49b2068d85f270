# Stream devices, against a driver made for the purpose.
opm_add_test(StreamDeviceTests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/StreamDeviceTest.cpp
  LIBS Platform
  LABELS unit)

add_library(stream_test_driver SHARED ${CMAKE_CURRENT_LIST_DIR}/StreamDeviceTestDriver.cpp)
target_include_directories(stream_test_driver PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(stream_test_driver PROPERTIES PREFIX "")
add_dependencies(StreamDeviceTests stream_test_driver)
