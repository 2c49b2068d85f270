#include "Common/MessageNotifier.h"

#include <QApplication>

#include "Common/Message.h"

void CMessageNotifier::ShowMessage(const std::wstring& text) {
    CMessage box(text, QApplication::activeWindow());
    box.DoModal();
}
