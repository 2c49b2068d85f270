#pragma once
// The user notifier of the code below the screens, shown as the toolkit's
// plain message box over the foreground window.

#include "Common/Toolkit/IUserNotifier.h"

class CMessageNotifier : public IUserNotifier {
public:
    void ShowMessage(const std::wstring& text) override;
};
