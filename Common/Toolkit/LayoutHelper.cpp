#include "Common/Toolkit/LayoutHelper.h"

#include <QWidget>
#include <algorithm>

namespace {

// One axis: start and length of a control for a dialog that grew by `delta`.
struct Span {
    int start;
    int length;
};

Span Follow(Span reference, int delta, bool nearEdge, bool farEdge) {
    if (nearEdge && farEdge) return {reference.start, std::max(0, reference.length + delta)};
    if (farEdge) return {reference.start + delta, reference.length};
    if (nearEdge) return reference;
    return {reference.start + delta / 2, reference.length};
}

}  // namespace

void CLayoutHelper::SetTarget(const QWidget* targetWnd) {
    target = targetWnd;
    referenceSize = targetWnd != nullptr ? targetWnd->size() : QSize();
}

bool CLayoutHelper::AddControl(QWidget* control, const LayoutOptions& options) {
    if (control == nullptr || target == nullptr || !target->isAncestorOf(control)) return false;
    for (const Entry& entry : entries) {
        if (entry.control == control) return false;
    }
    QRect reference = control->geometry();
    if (options.height > 0) {
        // A fixed height keeps the edge the control is anchored to.
        if ((options.anchors & LayoutOptions::kBottom) && !(options.anchors & LayoutOptions::kTop))
            reference.setTop(reference.bottom() + 1 - options.height);
        else
            reference.setHeight(options.height);
    }
    entries.push_back({control, options, reference});
    return true;
}

void CLayoutHelper::Layout(const QSize& size) const {
    if (!referenceSize.isValid()) return;
    const int dx = size.width() - referenceSize.width();
    const int dy = size.height() - referenceSize.height();
    for (const Entry& entry : entries) {
        if (!entry.control) continue;
        const unsigned a = entry.options.anchors;
        const Span x = Follow({entry.reference.x(), entry.reference.width()}, dx,
                              a & LayoutOptions::kLeft, a & LayoutOptions::kRight);
        const Span y = Follow({entry.reference.y(), entry.reference.height()}, dy,
                              a & LayoutOptions::kTop, a & LayoutOptions::kBottom);
        entry.control->setGeometry(x.start, y.start, x.length, y.length);
    }
}
