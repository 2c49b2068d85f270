# Result files: their bytes, loading, the preview and saving through the name entry.
opm_add_test(ResultFileTests GUI_MAIN SOURCES ${CMAKE_CURRENT_LIST_DIR}/ResultFileTest.cpp
  LIBS PowerMeter Qt6::Test opm_test_language_pack LABELS unit)
add_dependencies(ResultFileTests language-packs)
