# The platform layer; the loader and stream-device tests use the simulator's
# shared objects, built beside the test executable.
file(GLOB platform_tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*Test.cpp)
list(FILTER platform_tests EXCLUDE REGEX "/BluezTest\\.cpp$")
opm_add_test(PlatformTests SOURCES ${platform_tests} LIBS Platform Qt6::Core LABELS unit)
add_dependencies(PlatformTests tavix_sim_olt tavix_sim_bench)
