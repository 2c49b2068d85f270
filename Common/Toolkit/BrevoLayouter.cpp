#include "Common/Toolkit/BrevoLayouter.h"

#include <QEvent>
#include <QWidget>

#include "Platform/FatalError.h"

void BrevoLayouter::Bind(QWidget* targetWnd) {
    OPM_ASSERT(targetWnd);
    OPM_ASSERT(!inited && "Layouter is bound already");
    target = targetWnd;
    layoutHelper.SetTarget(targetWnd);
    targetWnd->installEventFilter(this);
    inited = true;
}

void BrevoLayouter::AddControl(QWidget& control, const LayoutOptions& options) {
    OPM_ASSERT(inited);
    // clang-format off
    OPM_ASSERT(layoutHelper.AddControl( &control, options ));
    // clang-format on
    Layout();
}

void BrevoLayouter::Layout() {
    OPM_ASSERT(inited);
    if (target) layoutHelper.Layout(target->size());
}

bool BrevoLayouter::eventFilter(QObject* watched, QEvent* event) {
    if (inited && watched == target && event->type() == QEvent::Resize) Layout();
    return QObject::eventFilter(watched, event);
}
