# The transports against a real OBEX server and against silent and dropping peers.
opm_add_test(ObexTransferTest SOURCES ${CMAKE_CURRENT_LIST_DIR}/ObexTransferTest.cpp
  LIBS Common LABELS integration GUI_MAIN)
