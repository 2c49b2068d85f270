#pragma once
// How code below the screens shows a message to the user: a modal message box
// owned by the foreground window. The dialog toolkit supplies the real one;
// tests supply a fake that records the texts.

#include <string>

class IUserNotifier {
public:
    virtual ~IUserNotifier() = default;
    // Shows the text and returns when the user has closed the box.
    virtual void ShowMessage(const std::wstring& text) = 0;
};
