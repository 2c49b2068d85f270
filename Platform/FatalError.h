#pragma once
// The program-wide fatal assertion: checks stay in every build, report the
// expression, the source file and the line, and end the process with code 1.

#include <functional>
#include <string>

// Never returns. `file` may carry a directory and an extension; both are cut.
[[noreturn]] void FatalAssertion(const char* expression, const char* file, int line);

// The text shown for a failed check (expression, "File: ", "Line: ", closing line).
std::string FatalAssertionText(const char* expression, const char* file, int line);

namespace platform {
// Hook that shows the "Unrecoverable error" box; installed by the toolkit when
// a GUI exists. Without it the text goes to the debug output only. It is
// called for every failure, from any thread, and the process ends when it
// returns.
using FatalErrorBox = std::function<void(const std::wstring& text)>;
void SetFatalErrorBox(FatalErrorBox box);
}  // namespace platform

// OPM_ASSERT checks at this source location. OPM_ASSERT_AT reports a fixed,
// documented location (file name without extension, line) so that the text a
// technician reads stays the same however the source is rearranged.
#define OPM_ASSERT(expr) ((expr) ? static_cast<void>(0) : FatalAssertion(#expr, __FILE__, __LINE__))
#define OPM_ASSERT_AT(expr, file, line) \
    ((expr) ? static_cast<void>(0) : FatalAssertion(#expr, file, line))
