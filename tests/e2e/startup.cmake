# The application executable on throw-away images: start-up faults, the log,
# a stop request.
opm_add_test(StartupTest
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/StartupTest.cpp
  LIBS Qt6::Core Support
  LABELS e2e
  GUI_MAIN)
target_compile_definitions(StartupTest PRIVATE
  OPM_MAKE_IMAGE="${PROJECT_SOURCE_DIR}/scripts/make-image.sh" OPM_BUILD_DIR="${CMAKE_BINARY_DIR}")
add_dependencies(StartupTest PowerMeterApp simulator language-packs)

# The program in a real X session, driven by key presses.
add_test(NAME DesktopRunTest
  COMMAND ${CMAKE_CURRENT_LIST_DIR}/desktop_run.py ${PROJECT_SOURCE_DIR}/scripts/make-image.sh ${CMAKE_BINARY_DIR})
set_tests_properties(DesktopRunTest PROPERTIES LABELS "e2e;ui" TIMEOUT 300 ENVIRONMENT
  "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp")
