# The measuring screen on the simulated instrument, in an image of its own.
opm_add_test(OPMDialogTests GUI_MAIN SOURCES ${CMAKE_CURRENT_LIST_DIR}/Screens/OPMDialogTest.cpp LABELS ui
  LIBS PowerMeter tavix_sim_bench Qt6::Test opm_test_language_pack opm_test_screenshot)
target_compile_definitions(OPMDialogTests PRIVATE OPM_BUILD_DIR="${CMAKE_BINARY_DIR}"
  OPM_MAKE_IMAGE="${PROJECT_SOURCE_DIR}/scripts/make-image.sh")
add_dependencies(OPMDialogTests simulator)
