#include "Common/Toolkit/ChangeValueDialog.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <cstdio>

#include "Common/Toolkit/DialogResults.h"
#include "Common/Toolkit/DigitEdit.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

CChangeValueDialog::CChangeValueDialog(const std::wstring& title, double value, double minValue,
                                       double maxValue, int decimals, QWidget* parent)
    : QDialog(parent),
      title(title),
      startValue(value),
      value(value),
      minValue(minValue),
      maxValue(maxValue),
      decimals(decimals),
      digits(value, minValue, maxValue, decimals),
      frame(*this, true) {}

int CChangeValueDialog::DoModal() {
    return exec() == QDialog::Accepted ? IDOK : IDCANCEL;
}

std::wstring CChangeValueDialog::RangeMessage() const {
    const QByteArray narrowTitle = QString::fromStdWString(title).toUtf8();
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, kRangeMessageFormat, narrowTitle.constData(), decimals,
                  minValue, decimals, maxValue);
    return QString::fromUtf8(buffer).toStdWString();
}

void CChangeValueDialog::showEvent(QShowEvent* event) {
    if (!initialised) {
        initialised = true;
        OnInitDialog();
    }
    QDialog::showEvent(event);
}

void CChangeValueDialog::OnInitDialog() {
    const bool templateLoaded = LoadDialogTemplate(IDD, frame.Client());
    OPM_ASSERT(templateLoaded && "Value editor template missing from the language pack");
    QWidget* placeholder = GetDlgItem(frame.Client(), IDC_VALUE);
    auto* range = qobject_cast<QLabel*>(GetDlgItem(frame.Client(), IDC_RANGE));
    OPM_ASSERT(placeholder && range);

    edit = new CDigitEdit(frame.Client());
    edit->setGeometry(placeholder->geometry());
    edit->setObjectName(placeholder->objectName());
    edit->show();
    delete placeholder;
    QFont big;
    FontCreator::CreateFont(big, 44, 700);
    edit->setFont(big);
    connect(edit, &CDigitEdit::CellTapped, this, [this](int index) {
        digits.MoveTo(index);
        ShowDigits();
    });

    QFont captionFont;
    FontCreator::CreateCommonFont(captionFont, 16, 700);
    range->setFont(captionFont);
    range->setText(QString::asprintf("%.*f \u2026 %.*f", decimals, minValue, decimals, maxValue));

    using Action = void (CValueDigits::*)();
    const std::pair<int, Action> stepKeys[] = {{IDC_CURSOR_LEFT, &CValueDigits::MoveLeft},
                                               {IDC_CURSOR_RIGHT, &CValueDigits::MoveRight},
                                               {IDC_DIGIT_UP, &CValueDigits::StepUp},
                                               {IDC_DIGIT_DOWN, &CValueDigits::StepDown}};
    for (const auto& [id, action] : stepKeys) {
        auto* key = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), id));
        OPM_ASSERT(key);
        key->setFocusPolicy(Qt::NoFocus);
        key->setFont(captionFont);
        connect(key, &QPushButton::clicked, this, [this, action = action] {
            (digits.*action)();
            ShowDigits();
        });
    }
    auto* okBtn = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDOK));
    auto* cancelBtn = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDCANCEL));
    OPM_ASSERT(okBtn && cancelBtn);
    for (QPushButton* key : {okBtn, cancelBtn}) {
        key->setFocusPolicy(Qt::NoFocus);
        key->setFont(captionFont);
    }
    connect(okBtn, &QPushButton::clicked, this, &CChangeValueDialog::OnOK);
    connect(cancelBtn, &QPushButton::clicked, this, &CChangeValueDialog::OnCancel);

    frame.SetCaption(QString::fromStdWString(title));
    frame.ResizeClient(frame.Client()->size());
    setGeometry(CPopupFrame::PlaceOver(size(), parentWidget()));
    ShowDigits();

    setFocusPolicy(Qt::StrongFocus);
    setFocus();
    installEventFilter(this);
    for (QWidget* child : findChildren<QWidget*>()) child->installEventFilter(this);
}

void CChangeValueDialog::ShowDigits() {
    if (edit != nullptr) edit->SetText(QString::fromStdString(digits.Text()), digits.Cursor());
}

bool CChangeValueDialog::OnKeyDown(UINT virtualKey, QChar typed) {
    switch (virtualKey) {
        case VK_LEFT:
        case VK_BACK:
            digits.MoveLeft();
            break;
        case VK_RIGHT:
            digits.MoveRight();
            break;
        case VK_UP:
            digits.StepUp();
            break;
        case VK_DOWN:
            digits.StepDown();
            break;
        case VK_RETURN:
            OnOK();
            return true;
        case VK_ESCAPE:
            OnCancel();
            return true;
        default:
            if (typed.isNull() || typed.unicode() > 127 ||
                !digits.Type(static_cast<char>(typed.unicode())))
                return false;
            break;
    }
    ShowDigits();
    return true;
}

void CChangeValueDialog::OnOK() {
    if (!digits.InRange()) {
        CMessage box(RangeMessage(), this);
        box.DoModal();
        return;
    }
    value = digits.Value();
    accept();
}

void CChangeValueDialog::OnCancel() {
    value = startValue;
    QDialog::reject();
}

// Closing the box any other way is a cancel too.
void CChangeValueDialog::reject() {
    OnCancel();
}

bool CChangeValueDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && edit != nullptr) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const QChar typed = key->text().size() == 1 ? key->text().at(0) : QChar();
        if (OnKeyDown(VirtualKeyFromQt(key->key()), typed)) return true;
    }
    return QDialog::eventFilter(watched, event);
}
