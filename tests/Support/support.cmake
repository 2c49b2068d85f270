# The T-classes of Support/.
opm_add_test(SupportTest
  SOURCES NarrowStringTest.cpp PtrArrayTest.cpp IniEntryTest.cpp IniSectionTest.cpp
          IniFileTest.cpp ConfigErrorTest.cpp LenUnitTest.cpp LogFileTest.cpp
  LIBS Support
  LABELS unit)
