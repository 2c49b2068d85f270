# The transports against a real OBEX server and against silent and dropping peers.
# Qt's Bluetooth socket hands memory to Qt's D-Bus thread inside Qt, which is
# not instrumented: ThreadSanitizer would see the allocation and the free
# without the lock between.
opm_add_test(ObexTransferTest SOURCES ${CMAKE_CURRENT_LIST_DIR}/ObexTransferTest.cpp
  LIBS Common LABELS integration GUI_MAIN)
set_property(TEST ObexTransferTest APPEND PROPERTY ENVIRONMENT "TSAN_OPTIONS=ignore_noninstrumented_modules=1")
