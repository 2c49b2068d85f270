# Battery and mains state from the power-supply class, on a fake sysfs tree.
opm_add_test(PowerStatusTests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/PowerStatusTest.cpp
  LIBS Platform
  LABELS unit)
