# The screens on the simulated instrument, each in an image the image script
# assembles: the measuring screen, and the main menu panel over a measuring
# screen with the parameter dialog.
opm_add_test(OPMDialogTests GUI_MAIN SOURCES ${CMAKE_CURRENT_LIST_DIR}/Screens/OPMDialogTest.cpp
  LIBS PowerMeter tavix_sim_bench Qt6::Test opm_test_language_pack opm_test_screenshot LABELS ui)
opm_add_test(PowerMeterScreensTest GUI_MAIN SOURCES ${CMAKE_CURRENT_LIST_DIR}/Screens/MainMenuTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/Screens/OPMFileSystemDialogTest.cpp
  LIBS PowerMeter Qt6::Test opm_test_language_pack opm_test_screenshot LABELS ui)
foreach(test OPMDialogTests PowerMeterScreensTest)
  target_compile_definitions(${test} PRIVATE OPM_BUILD_DIR="${CMAKE_BINARY_DIR}"
    OPM_MAKE_IMAGE="${PROJECT_SOURCE_DIR}/scripts/make-image.sh")
  add_dependencies(${test} simulator language-packs)
endforeach()
