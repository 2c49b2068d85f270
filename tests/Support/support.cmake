# The T-classes of Support/.
opm_add_test(SupportTest SOURCES IniFileTest.cpp LenUnitTest.cpp LogFileTest.cpp LIBS Support
  LABELS unit)

# Writers killed at random instants; a few seconds, more under sanitizers.
opm_add_test(SupportCrashInjectionTest
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/CrashInjectionTest.cpp
  LIBS Support PowerMeter
  LABELS slow
  TIMEOUT 240)
