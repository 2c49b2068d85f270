#include "Common/Toolkit/MessageNotifier.h"

#include <QApplication>

#include "Common/Toolkit/Message.h"

void CMessageNotifier::ShowMessage(const std::wstring& text) {
    CMessage box(text, QApplication::activeWindow());
    box.DoModal();
}
