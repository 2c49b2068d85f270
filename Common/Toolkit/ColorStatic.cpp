#include "Common/Toolkit/ColorStatic.h"

#include <QLayout>

#include "Common/Utilities/LanguageResources.h"

CColorStatic::CColorStatic(QWidget* parent) : QLabel(parent) {}

QColor CColorStatic::ToQColor(COLORREF color) {
    return QColor(static_cast<int>(color & 0xFF), static_cast<int>((color >> 8) & 0xFF),
                  static_cast<int>((color >> 16) & 0xFF));
}

bool CColorStatic::SubclassDlgItem(int id, QWidget* dialog) {
    QWidget* original = GetDlgItem(dialog, id);
    if (original == nullptr || original == this) return original == this;
    QWidget* owner = original->parentWidget();

    setParent(owner);
    setObjectName(original->objectName());
    setGeometry(original->geometry());
    setFont(original->font());
    setEnabled(original->isEnabled());
    setSizePolicy(original->sizePolicy());
    setMinimumSize(original->minimumSize());
    setMaximumSize(original->maximumSize());
    if (auto* label = qobject_cast<QLabel*>(original)) {
        setText(label->text());
        setAlignment(label->alignment());
        setWordWrap(label->wordWrap());
    }
    if (owner != nullptr && owner->layout() != nullptr)
        delete owner->layout()->replaceWidget(original, this);
    stackUnder(original);
    setVisible(!original->isHidden());
    delete original;
    if (hasTextColor || hasBkColor) ApplyColours();
    return true;
}

void CColorStatic::SetTextColor(COLORREF color) {
    textColor = color;
    hasTextColor = true;
    ApplyColours();
}

void CColorStatic::SetBkColor(COLORREF color) {
    bkColor = color;
    hasBkColor = true;
    ApplyColours();
}

// A style sheet of the control's own: it wins over any style of the screen.
void CColorStatic::ApplyColours() {
    QString style;
    if (hasTextColor) style = QStringLiteral("color: %1;").arg(ToQColor(textColor).name());
    if (hasBkColor) style += QStringLiteral(" background: %1;").arg(ToQColor(bkColor).name());
    setStyleSheet(style);
}
