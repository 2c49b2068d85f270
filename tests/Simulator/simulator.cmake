# The simulated instrument: the bench file and opm-bench, the model's noise,
# the module library, the instrument image. The drivers and the readings are
# checked end to end, through the application (tests/e2e).
opm_add_test(SimulatorTests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/bench/FrontEndTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bench/BenchFileTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/module/OtdrModuleTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/InstrumentImageTest.cpp
  LIBS opm_bench_tool tavix_sim_bench Support Platform
  LABELS unit)
target_compile_definitions(SimulatorTests PRIVATE OPM_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
# The test lies beside the simulator's libraries and loads them from there.
set_target_properties(SimulatorTests PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "\$ORIGIN")
add_dependencies(SimulatorTests simulator)
