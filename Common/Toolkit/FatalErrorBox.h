#pragma once
// The "Unrecoverable error" box of the fatal assertion, shown through Qt when
// the program has a screen. Platform only keeps a hook, so that the lowest
// layer needs no widgets.

#include <string>

class CFatalErrorBox {
public:
    // Installs the box as the platform's fatal-error hook.
    static void Install();
    // True when a QApplication runs on a platform that has a screen to show it on.
    static bool CanShow();
    // Shows the modal box over the active window and returns when the user has
    // closed it: titled "Unrecoverable error", with the error icon, the text
    // below the title. Called from another thread it asks the UI thread to show it.
    // One box at a time: while a box is up, a further call shows none and
    // returns when that box has been closed.
    static void Show(const std::wstring& text);

private:
    static void ShowOnGuiThread(const std::wstring& text);
    static void WaitUntilClosed(unsigned closedBefore);
};
