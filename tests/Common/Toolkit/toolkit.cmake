# A pack with the loader's odd cases and screens that lack a placeholder; it
# borrows the soft-key bitmaps and the toolkit's own templates from English.
set(toolkit_test_pack_source ${CMAKE_CURRENT_BINARY_DIR}/toolkit-test-pack)
file(COPY ${CMAKE_CURRENT_LIST_DIR}/../testpack/ DESTINATION ${toolkit_test_pack_source})
file(COPY ${PROJECT_SOURCE_DIR}/Resources/en/templates/372.ui
          ${PROJECT_SOURCE_DIR}/Resources/en/templates/381.ui
     DESTINATION ${toolkit_test_pack_source}/templates)
set(language_packs)
opm_language_pack(toolkit-test toolkit-test SOURCE ${toolkit_test_pack_source}
                  DESTINATION ${CMAKE_CURRENT_BINARY_DIR})
add_custom_target(toolkit-test-pack DEPENDS ${language_packs})

# The dialog toolkit and the helpers under it, with its gallery, on a desktop
# screen larger than the application's 640x480 window.
opm_add_test(CommonToolkitTest
  OWN_MAIN
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/ScreenMain.cpp ${CMAKE_CURRENT_LIST_DIR}/ToolkitTest.cpp
          ${CMAKE_CURRENT_LIST_DIR}/../Utilities/UtilitiesTest.cpp
  LIBS Common Platform Qt6::Test opm_test_language_pack opm_test_screenshot
  LABELS ui)
target_compile_definitions(CommonToolkitTest PRIVATE OPM_TOOLKIT_TEST_PACK="${CMAKE_CURRENT_BINARY_DIR}/toolkit-test.rcc")
add_dependencies(CommonToolkitTest toolkit-test-pack)
