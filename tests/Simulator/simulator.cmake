# The simulated instrument: physical model, bench file, opm-bench, the
# drivers through the platform's stream devices, the module library.
opm_add_test(SimulatorTests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/bench/FrontEndTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bench/BenchFileTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bench/FactoryDataTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tools/BenchToolTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/drivers/SimulatedDriversTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/module/OtdrModuleTest.cpp
    ${CMAKE_CURRENT_LIST_DIR}/InstrumentImageTest.cpp
  LIBS opm_bench_tool tavix_sim_bench Support Platform
  LABELS unit)
target_compile_definitions(SimulatorTests PRIVATE OPM_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
# The test lies beside the simulator's libraries and loads them from there.
set_target_properties(SimulatorTests PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "\$ORIGIN")
add_dependencies(SimulatorTests tavix_otdr tavix_sim_olt tavix_sim_btd opm-bench)

# The shipped factory data and hive on the application's meter and backend.
opm_add_test(SimulatedInstrumentTests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/SimulatedInstrumentTest.cpp
  LIBS PowerMeter tavix_sim_bench
  LABELS unit)
target_compile_definitions(SimulatedInstrumentTests PRIVATE OPM_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
set_target_properties(SimulatedInstrumentTests PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "\$ORIGIN")
add_dependencies(SimulatedInstrumentTests tavix_sim_olt)
