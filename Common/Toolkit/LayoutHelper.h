#pragma once
// Remembers where controls sat in a dialog of its template size and moves
// them when the dialog takes another size, by their LayoutOptions.

#include <QPointer>
#include <QRect>
#include <QSize>
#include <vector>

#include "Common/Toolkit/LayoutOptions.h"

class QWidget;

class CLayoutHelper {
public:
    // The dialog whose controls are placed; its present size is the size the
    // controls' places refer to.
    void SetTarget(const QWidget* target);
    // False for a null control, one that is not inside the target, or one
    // registered already.
    bool AddControl(QWidget* control, const LayoutOptions& options);
    // Places every registered control that still exists for a dialog of `size`.
    void Layout(const QSize& size) const;
    size_t Count() const { return entries.size(); }

private:
    struct Entry {
        QPointer<QWidget> control;
        LayoutOptions options;
        QRect reference;
    };
    QPointer<const QWidget> target;
    QSize referenceSize;
    std::vector<Entry> entries;
};
