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
