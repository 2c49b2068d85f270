# Every toolkit dialog in both language packs on a 640x480 screen; with
# OPM_SCREENSHOTS=dir a picture of each for review.
opm_add_test(GalleryTest
  SOURCES GalleryTest.cpp
  LIBS Common Qt6::Test opm_test_screenshot
  LABELS ui
  OWN_MAIN)
add_dependencies(GalleryTest language-packs)
