# opm-probe on throw-away instrument images of the simulated instrument.
foreach(test ProbeTest ProbeSweepTest)
  # The model tells where its ranges switch and its scale ends.
  opm_add_test(${test}
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/${test}.cpp
    LIBS Qt6::Core Support tavix_sim_bench
    LABELS e2e
    GUI_MAIN
    TIMEOUT 600)
  target_compile_definitions(${test} PRIVATE
    OPM_MAKE_IMAGE="${PROJECT_SOURCE_DIR}/scripts/make-image.sh" OPM_BUILD_DIR="${CMAKE_BINARY_DIR}")
  set_target_properties(${test} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "\$ORIGIN")
  # The image is assembled from these.
  add_dependencies(${test} opm-probe simulator)
endforeach()
# The sweep drives its six probes from threads of its own and starts each
# opm-probe from them; the child only execs.
set_property(TEST ProbeSweepTest APPEND PROPERTY ENVIRONMENT "TSAN_OPTIONS=die_after_fork=0")
