# Every toolkit screen and box in both language packs on the instrument's
# 640x480 screen; with OPM_SCREENSHOTS=dir a picture of each for review.
opm_add_test(GalleryTest
  OWN_MAIN
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/../ScreenMain.cpp ${CMAKE_CURRENT_LIST_DIR}/GalleryTest.cpp
  LIBS Common Platform Qt6::Test opm_test_language_pack opm_test_screenshot
  LABELS ui)
target_compile_definitions(GalleryTest PRIVATE OPM_TEST_SCREEN="640x480")
