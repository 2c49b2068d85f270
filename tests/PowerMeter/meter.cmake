# The power meter and its hardware backend. The tests link the meter's own
# sources rather than the whole application library, so that they build
# and run with only the layers below it.
add_library(meter_test_support STATIC
  ${PROJECT_SOURCE_DIR}/PowerMeter/OPMMeter.cpp
  ${PROJECT_SOURCE_DIR}/PowerMeter/HardwareOPMMeterBackend.cpp
  ${PROJECT_SOURCE_DIR}/PowerMeter/OPMMeterError.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FakeOpmMeterBackend.cpp
  ${CMAKE_CURRENT_LIST_DIR}/SteppedSleep.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MeterTestFiles.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MeterFixture.cpp)
target_include_directories(meter_test_support PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(meter_test_support PUBLIC Support Platform Qt6::Core GTest::gtest)

opm_add_test(OPMMeterTests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterCalibrationFileTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterWorkerTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/OPMMeterDeathTest.cpp
  LIBS meter_test_support
  LABELS unit)
