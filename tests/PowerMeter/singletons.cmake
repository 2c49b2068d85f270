# Process-wide objects of the application and the application directory.
opm_add_test(PowerMeterSingletonsTest
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/SingletonsTest.cpp
  LIBS PowerMeter
  LABELS unit)
