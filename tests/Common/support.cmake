# Settings store, common configuration and log access.
opm_add_test(CommonSupportTest
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/AppConfigTest.cpp ${CMAKE_CURRENT_LIST_DIR}/CommonConfigTest.cpp
          ${CMAKE_CURRENT_LIST_DIR}/LoggingTest.cpp
  LIBS Common
  LABELS unit)
