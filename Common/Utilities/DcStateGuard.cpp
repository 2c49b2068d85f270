#include "Common/Utilities/DcStateGuard.h"

#include <QPainter>

#include "Platform/FatalError.h"

namespace {
// A painter that is not painting has no state to save (the old SaveDC's 0).
int SaveDC(QPainter& dc) {
    if (!dc.isActive()) return 0;
    dc.save();
    return 1;
}
}  // namespace

DcStateGuard::DcStateGuard(QPainter& dc) : dc(dc), savedDeviceContextId(SaveDC(dc)) {
    OPM_ASSERT(savedDeviceContextId != 0);
}

DcStateGuard::~DcStateGuard() {
    dc.restore();
}
