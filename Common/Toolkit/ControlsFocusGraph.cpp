#include "Common/Toolkit/ControlsFocusGraph.h"

#include <QApplication>
#include <QWidget>

#include "Common/Toolkit/Dialog.h"
#include "Platform/FatalError.h"
#include "Platform/WindowMessages.h"

namespace {

// A control as the old framework handed it out: a window that may be gone.
struct Window {
    QWidget* widget;
    HWND GetSafeHwnd() const { return widget != nullptr ? WindowHandleOf(widget) : nullptr; }
};

}  // namespace

ControlsFocusGraph::ControlsFocusGraph(CDialog& parent) : parent(parent) {}

bool ControlsFocusGraph::CheckControl(UINT ctrlId) const {
    return ctrlId == 0 || parent.GetDlgItem(static_cast<int>(ctrlId)) != nullptr;
}

// clang-format off
ControlsFocusGraph& ControlsFocusGraph::Add(UINT sourceCtrlId, UINT leftCtrlId, UINT topCtrlId,
                                            UINT rightCtrlId, UINT bottomCtrlId) {
    OPM_ASSERT(sourceCtrlId && parent.GetDlgItem( sourceCtrlId ));
    OPM_ASSERT(CheckControl( leftCtrlId ));
    OPM_ASSERT(CheckControl( topCtrlId ));
    OPM_ASSERT(CheckControl( rightCtrlId ));
    OPM_ASSERT(CheckControl( bottomCtrlId ));
    nodes.push_back({sourceCtrlId, {leftCtrlId, topCtrlId, rightCtrlId, bottomCtrlId}});
    return *this;
}
// clang-format on

void ControlsFocusGraph::Move(int direction) {
    if (direction < 0 || direction > 3) return;
    const QWidget* focused = QApplication::focusWidget();
    if (focused == nullptr) return;
    for (const Node& node : nodes) {
        if (parent.GetDlgItem(static_cast<int>(node.source)) != focused) continue;
        const UINT targetId = node.neighbours[direction];
        if (targetId == 0) return;
        const Window target{parent.GetDlgItem(static_cast<int>(targetId))};
        const Window* targetWnd = target.widget != nullptr ? &target : nullptr;
        OPM_ASSERT(targetWnd && targetWnd->GetSafeHwnd());
        targetWnd->widget->setFocus(Qt::OtherFocusReason);
        return;
    }
}
