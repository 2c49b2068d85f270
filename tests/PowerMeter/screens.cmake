# The main menu panel over a measuring screen and the parameter dialog, on the
# simulated instrument in an image the image script assembles.
opm_add_test(PowerMeterScreensTest GUI_MAIN SOURCES ${CMAKE_CURRENT_LIST_DIR}/Screens/MainMenuTest.cpp
  LIBS PowerMeter Qt6::Test opm_test_language_pack opm_test_screenshot LABELS ui)
target_compile_definitions(PowerMeterScreensTest PRIVATE OPM_BUILD_DIR="${CMAKE_BINARY_DIR}"
  OPM_MAKE_IMAGE="${PROJECT_SOURCE_DIR}/scripts/make-image.sh")
add_dependencies(PowerMeterScreensTest simulator language-packs)
