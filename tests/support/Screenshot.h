#pragma once
// Pictures of what a person would see, for review. Only active when the
// environment variable OPM_SCREENSHOTS names a directory; otherwise a no-op,
// so tests can call it unconditionally.

#include <QString>
#include <initializer_list>

class QWidget;

namespace screenshot {

// True when OPM_SCREENSHOTS is set.
bool Enabled();

// Writes `base` (a window) and any further top-level windows shown over it
// (message boxes, submenus) into <dir>/<name>.png, each at its place on the
// screen relative to `base`. Returns the path written, or an empty string
// when disabled. A failure to write is reported through the test's output.
QString Save(const QString& name, QWidget* base, std::initializer_list<QWidget*> overlays = {});

}  // namespace screenshot
