# The OBEX protocol, from bytes up.
opm_add_test(BluetoothTest SOURCES ${CMAKE_CURRENT_LIST_DIR}/ObexPacketTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ObexSessionTest.cpp LIBS Common
  LABELS unit)
