# The results list screen over a document of its own.
opm_add_test(ResultFileDialogTest GUI_MAIN
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/Screens/ResultFileDialogTest.cpp
  LIBS PowerMeter Qt6::Test opm_test_language_pack opm_test_screenshot LABELS ui)
