# Shared by every GUI test that wants pictures (OPM_SCREENSHOTS=dir).
if(NOT TARGET opm_test_screenshot)
  add_library(opm_test_screenshot STATIC ${PROJECT_SOURCE_DIR}/tests/support/Screenshot.cpp
                                         ${PROJECT_SOURCE_DIR}/tests/support/Screenshot.h)
  target_include_directories(opm_test_screenshot PUBLIC ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(opm_test_screenshot PUBLIC Qt6::Widgets)
endif()

# Makes a built language pack current for a test's scope.
if(NOT TARGET opm_test_language_pack)
  add_library(opm_test_language_pack STATIC ${PROJECT_SOURCE_DIR}/tests/support/LanguagePack.cpp
                                            ${PROJECT_SOURCE_DIR}/tests/support/LanguagePack.h)
  target_include_directories(opm_test_language_pack PUBLIC ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(opm_test_language_pack PUBLIC
                             OPM_LANGUAGE_PACK_DIR="${OPM_LANGUAGE_PACK_DIR}")
  target_link_libraries(opm_test_language_pack PUBLIC Common Platform)
  add_dependencies(opm_test_language_pack language-packs)
endif()
