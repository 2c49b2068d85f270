#include "Common/Toolkit/QuestionDialog.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include "Common/Toolkit/DialogResults.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MessageLayout.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

CQuestionDialog::CQuestionDialog(const std::wstring& text, QWidget* parent)
    : QDialog(parent), text(text), frame(*this, false) {}

int CQuestionDialog::DoModal() {
    return exec() == QDialog::Accepted ? IDYES : IDNO;
}

bool CQuestionDialog::Ask(const std::wstring& text, QWidget* parent) {
    CQuestionDialog box(text, parent);
    return box.DoModal() == IDYES;
}

void CQuestionDialog::showEvent(QShowEvent* event) {
    if (!initialised) {
        initialised = true;
        OnInitDialog();
    }
    QDialog::showEvent(event);
}

void CQuestionDialog::OnInitDialog() {
    const bool templateLoaded = LoadDialogTemplate(IDD, frame.Client());
    OPM_ASSERT(templateLoaded && "Question template missing from the language pack");
    auto* textCtrl = qobject_cast<QLabel*>(GetDlgItem(frame.Client(), IDC_TEXT));
    okBtn = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDOK));
    cancelBtn = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDCANCEL));
    OPM_ASSERT(okBtn && cancelBtn);
    OPM_ASSERT(textCtrl);

    QFont font;
    FontCreator::CreateCommonFont(font, 14, 700);
    for (QWidget* control : {static_cast<QWidget*>(textCtrl), static_cast<QWidget*>(okBtn),
                             static_cast<QWidget*>(cancelBtn)})
        control->setFont(font);
    textCtrl->setText(QString::fromStdWString(text));
    CMessageLayout::Arrange(frame, *textCtrl, *okBtn, *cancelBtn, parentWidget());

    connect(okBtn, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancelBtn, &QPushButton::clicked, this, &QDialog::reject);
    MarkKey(cancelBtn);

    installEventFilter(this);
    for (QWidget* child : findChildren<QWidget*>()) child->installEventFilter(this);
}

void CQuestionDialog::MarkKey(QPushButton* key) {
    CPopupFrame::Mark(okBtn, key == okBtn);
    CPopupFrame::Mark(cancelBtn, key == cancelBtn);
    marked = key;
    key->setFocus();
}

bool CQuestionDialog::OnKeyDown(UINT virtualKey) {
    switch (virtualKey) {
        case VK_LEFT:
            MarkKey(okBtn);
            return true;
        case VK_RIGHT:
            MarkKey(cancelBtn);
            return true;
        case VK_RETURN:
        case VK_SPACE:
            marked->click();
            return true;
        case VK_ESCAPE:
            reject();
            return true;
        default:
            return false;
    }
}

bool CQuestionDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && okBtn != nullptr) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (OnKeyDown(VirtualKeyFromQt(key->key()))) return true;
    }
    return QDialog::eventFilter(watched, event);
}
