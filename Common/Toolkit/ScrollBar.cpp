#include "Common/Toolkit/ScrollBar.h"

namespace {
// No arrow buttons: a tap on the track pages, the handle drags.
const QString kStyle = QStringLiteral(
    "QScrollBar:vertical { background: #d8d8d8; border: 2px solid #000000; width: 30px; }"
    "QScrollBar::handle:vertical { background: #202020; min-height: 44px; margin: 2px; }"
    "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0px; }"
    "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }");
}  // namespace

CScrollBar::CScrollBar() {
    hide();
}

bool CScrollBar::Create(DWORD style, const CRect& rect, QWidget* parent, UINT id) {
    if (created || ((style & WS_CHILD) != 0 && parent == nullptr)) return false;
    created = true;
    setParent(parent);
    setObjectName(QString::number(id));
    setOrientation((style & SBS_VERT) != 0 ? Qt::Vertical : Qt::Horizontal);
    setStyleSheet(kStyle);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(rect);
    setVisible((style & WS_VISIBLE) != 0);
    return true;
}
