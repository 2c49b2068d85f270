# The power meter and its hardware backend, with their test fakes and fixtures.
add_library(meter_test_support STATIC
  ${CMAKE_CURRENT_LIST_DIR}/FakeOpmMeterBackend.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SteppedSleep.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MeterTestFiles.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MeterFixture.cpp)
target_include_directories(meter_test_support PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(meter_test_support PUBLIC PowerMeter GTest::gtest)

opm_add_test(OPMMeterTests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterCalibrationFileTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterWorkerTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterDeathTest.cpp
  LIBS meter_test_support
  LABELS unit)

# A stand-in "OLT1:" driver in a folder of its own, named in the tests' hive.
add_library(meter_test_olt SHARED ${CMAKE_CURRENT_LIST_DIR}/MeterTestDriver.cpp)
target_include_directories(meter_test_olt PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
set_target_properties(meter_test_olt PROPERTIES
  PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/meter-test-driver)

opm_add_test(HardwareOPMMeterBackendTests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/HardwareOPMMeterBackendTest.cpp
  LIBS meter_test_support
  LABELS unit)
target_compile_definitions(HardwareOPMMeterBackendTests PRIVATE
  METER_TEST_DRIVER="$<TARGET_FILE:meter_test_olt>")
add_dependencies(HardwareOPMMeterBackendTests meter_test_olt)
