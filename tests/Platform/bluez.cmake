# BlueZ on a mock of its own, on a private bus the test starts.
opm_add_test(BluezTest SOURCES ${CMAKE_CURRENT_LIST_DIR}/BluezTest.cpp
             LIBS Platform Qt6::DBus LABELS unit GUI_MAIN TIMEOUT 120)
add_dependencies(BluezTest tavix_btd)
