# The power meter core on a fake detector.
opm_add_test(OPMMeterTests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/OPMMeterTest.cpp
  LIBS PowerMeter
  LABELS unit)
