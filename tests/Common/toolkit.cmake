# The dialog toolkit: soft keys, submenu, dialog chain, focus, fonts, battery
# bar and the language-pack loader.

# Shared by every GUI test that wants pictures (OPM_SCREENSHOTS=dir).
if(NOT TARGET opm_test_screenshot)
  add_library(opm_test_screenshot STATIC ${PROJECT_SOURCE_DIR}/tests/support/Screenshot.cpp
                                         ${PROJECT_SOURCE_DIR}/tests/support/Screenshot.h)
  target_include_directories(opm_test_screenshot PUBLIC ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(opm_test_screenshot PUBLIC Qt6::Widgets)
endif()
