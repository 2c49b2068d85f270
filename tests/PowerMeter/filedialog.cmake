# The result files dialog over a scratch folder.
opm_add_test(OPMFileSystemDialogTest GUI_MAIN
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/Screens/OPMFileSystemDialogTest.cpp
  LIBS PowerMeter Qt6::Test opm_test_language_pack opm_test_screenshot LABELS ui)
add_dependencies(OPMFileSystemDialogTest language-packs)
