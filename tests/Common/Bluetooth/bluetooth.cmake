# The OBEX protocol, from bytes up, and the service on the simulated instrument.
opm_add_test(BluetoothTest SOURCES ${CMAKE_CURRENT_LIST_DIR}/ObexPacketTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ObexSessionTest.cpp ${CMAKE_CURRENT_LIST_DIR}/StackServiceTest.cpp
  LIBS Common LABELS unit)
add_dependencies(BluetoothTest tavix_sim_btd)
# The sender dialog against a scripted service.
opm_add_test(BluetoothSenderTest GUI_MAIN
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/SendFileViaBlueToothTest.cpp
  LIBS Common Platform Qt6::Test opm_test_language_pack opm_test_screenshot LABELS ui)
# The sender on a mock BlueZ, on a private bus the test starts; the
# instrument's Bluetooth driver beside the test.
opm_add_test(SenderOnBluezTest GUI_MAIN TIMEOUT 120
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/SenderOnBluezTest.cpp
  LIBS Common Platform Qt6::DBus Qt6::Test opm_test_language_pack LABELS ui)
add_dependencies(SenderOnBluezTest tavix_btd)
