# The dialog toolkit: soft keys, submenu, dialog chain, focus, fonts, battery
# bar and the language-pack loader.

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

# A pack with the loader's odd cases and screens that lack a placeholder. It
# borrows the soft-key bitmaps' list and the toolkit's own templates from the
# English pack so that screens built from it can run.
set(toolkit_test_pack_source ${CMAKE_CURRENT_BINARY_DIR}/toolkit-test-pack)
file(COPY ${CMAKE_CURRENT_LIST_DIR}/testpack/ DESTINATION ${toolkit_test_pack_source})
file(COPY ${PROJECT_SOURCE_DIR}/Resources/en/templates/372.ui
          ${PROJECT_SOURCE_DIR}/Resources/en/templates/381.ui
     DESTINATION ${toolkit_test_pack_source}/templates)
set(language_packs)
opm_language_pack(toolkit-test toolkit-test SOURCE ${toolkit_test_pack_source}
                  DESTINATION ${CMAKE_CURRENT_BINARY_DIR})
add_custom_target(toolkit-test-pack DEPENDS ${language_packs})

opm_add_test(ToolkitTests
  GUI_MAIN
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/ToolkitTestSupport.h
    ${CMAKE_CURRENT_LIST_DIR}/LanguageResourcesTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/VirtualKeysTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/FontCreatorTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/KeysCombinationCatcherTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DcStateGuardTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/BrevoLayouterTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/KeyboardControlledDialogTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/MenuCtrlTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/MenuKeyTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/BaseDialogTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SubmenuDialogTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ControlsFocusGraphTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/BattaryBarTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ToolkitLookTest.cpp
  LIBS Common Platform Qt6::Test opm_test_language_pack opm_test_screenshot
  LABELS ui)
target_compile_definitions(ToolkitTests PRIVATE
                           OPM_TOOLKIT_TEST_PACK="${CMAKE_CURRENT_BINARY_DIR}/toolkit-test.rcc")
add_dependencies(ToolkitTests toolkit-test-pack)
