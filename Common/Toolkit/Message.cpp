#include "Common/Toolkit/Message.h"

#include <QLabel>
#include <QPushButton>

#include "Common/Toolkit/DialogResults.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MessageLayout.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

namespace {
// A string of the language pack, loaded the way the assertion below reads.
struct ResourceText {
    std::wstring value;
    bool LoadString(UINT id) { return LoadResourceString(id, value); }
};
}  // namespace

CMessage::CMessage(const std::wstring& text, QWidget* parent)
    : QDialog(parent), text(text), frame(*this, false) {}

CMessage::CMessage(UINT textCode, QWidget* parent) : CMessage(LoadText(textCode), parent) {}

std::wstring CMessage::LoadText(UINT textCode) {
    OPM_ASSERT_AT(textCode, "Message", 28);
    ResourceText text;
    OPM_ASSERT_AT(text.LoadString(textCode), "Message", 30);
    return text.value;
}

int CMessage::DoModal() {
    return exec() == QDialog::Accepted ? IDOK : IDCANCEL;
}

void CMessage::showEvent(QShowEvent* event) {
    if (!initialised) {
        initialised = true;
        OnInitDialog();
    }
    QDialog::showEvent(event);
}

void CMessage::OnInitDialog() {
    const bool templateLoaded = LoadDialogTemplate(IDD, frame.Client());
    OPM_ASSERT(templateLoaded && "Message template missing from the language pack");
    auto* textCtrl = qobject_cast<QLabel*>(GetDlgItem(frame.Client(), IDC_TEXT));
    auto* okBtn = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDOK));
    OPM_ASSERT(textCtrl && okBtn);

    QFont font;
    FontCreator::CreateCommonFont(font, 14, 400);
    textCtrl->setFont(font);
    okBtn->setFont(font);
    textCtrl->setText(QString::fromStdWString(text));

    connect(okBtn, &QPushButton::clicked, this, &QDialog::accept);
    okBtn->setDefault(true);
    okBtn->setFocus();
    CPopupFrame::Mark(okBtn, true);
    CMessageLayout::Arrange(frame, *textCtrl, *okBtn, parentWidget());
}
