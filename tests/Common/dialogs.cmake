# The toolkit's boxes: messages, question, processing indicator, value editor,
# virtual keyboard, the user notifier and the fatal error box.
opm_add_test(DialogsTest
  SOURCES
    ColorStaticTest.cpp
    ChangeValueDialogTest.cpp
    FatalErrorBoxTest.cpp
    FileNameCheckTest.cpp
    MessageBoxExTest.cpp
    MessageNotifierTest.cpp
    MessageTest.cpp
    ProcessingDialogTest.cpp
    QuestionDialogTest.cpp
    ValueDigitsTest.cpp
    VirtualKeyboardTest.cpp
    WordWrapTest.cpp
    FileSystemBrowserTest.cpp
  LIBS Common Qt6::Test
  LABELS ui
  GUI_MAIN)
add_dependencies(DialogsTest language-packs)
