# Helpers shared by the folder CMakeLists.

# opm_folder_library(<name> [DEPS ...]): one static library made of every
# .cpp/.h in the current folder (subfolders included), public include root
# at the repository top so that includes read "Support/IniFile.h".
function(opm_folder_library name)
  cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS
       ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  list(FILTER sources EXCLUDE REGEX "/(tools|drivers|app)/")
  set(cpp_sources ${sources})
  list(FILTER cpp_sources INCLUDE REGEX "\\.cpp$")
  if(cpp_sources)
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  else()
    # A folder that holds only headers so far.
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} INTERFACE ${ARG_DEPS})
  endif()
endfunction()

# opm_add_test(<name> SOURCES ... LIBS ... LABELS ... [GUI_MAIN] [OWN_MAIN]):
# one GoogleTest executable registered as one CTest test. By default it links
# gtest_main; GUI_MAIN gives it a main() that creates one QApplication
# (offscreen); OWN_MAIN means the sources bring their own main().
function(opm_add_test name)
  cmake_parse_arguments(ARG "GUI_MAIN;OWN_MAIN" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
  if(ARG_GUI_MAIN)
    add_executable(${name} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/GuiTestMain.cpp)
    target_link_libraries(${name} PRIVATE Qt6::Widgets)
  else()
    add_executable(${name} ${ARG_SOURCES})
  endif()
  if(NOT ARG_GUI_MAIN AND NOT ARG_OWN_MAIN)
    target_link_libraries(${name} PRIVATE GTest::gtest_main)
  endif()
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;ASAN_OPTIONS=detect_leaks=1;UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1")
endfunction()
