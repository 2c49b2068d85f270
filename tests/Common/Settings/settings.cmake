# Settings store, common configuration and log access.
opm_add_test(CommonSettingsTest
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/SettingsTest.cpp
  LIBS Common
  LABELS unit)
