# opm-probe on throw-away instrument images of the simulated instrument.

add_library(opm_e2e_probe_image STATIC ${CMAKE_CURRENT_LIST_DIR}/ProbeImage.cpp
                                       ${CMAKE_CURRENT_LIST_DIR}/ProbeImage.h)
target_link_libraries(opm_e2e_probe_image PUBLIC Qt6::Core)
target_compile_definitions(opm_e2e_probe_image PRIVATE
  OPM_MAKE_IMAGE="${PROJECT_SOURCE_DIR}/scripts/make-image.sh"
  OPM_BUILD_DIR="${CMAKE_BINARY_DIR}")

foreach(test ProbeTest ProbeSweepTest)
  opm_add_test(${test}
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/${test}.cpp
    LIBS opm_e2e_probe_image Support
    LABELS e2e
    GUI_MAIN
    TIMEOUT 900)
  # The image is assembled from these.
  add_dependencies(${test} opm-probe simulator)
endforeach()
# The sweep drives its six probes from threads of its own and starts each
# opm-bench and opm-probe from them; the child only execs.
set_property(TEST ProbeSweepTest APPEND PROPERTY ENVIRONMENT "TSAN_OPTIONS=die_after_fork=0")
