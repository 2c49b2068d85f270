# BlueZ as a mock, on a private bus the test starts; the driver beside the test.
opm_add_test(BluezTest SOURCES ${CMAKE_CURRENT_LIST_DIR}/bluez/BluezTest.cpp LIBS Platform Qt6::DBus LABELS unit GUI_MAIN TIMEOUT 120)
add_dependencies(BluezTest tavix_btd)
