#include "Common/Toolkit/KeysCombinationCatcher.h"

#include <algorithm>

#include "Platform/FatalError.h"

KeysCombinationCatcher::KeysCombinationCatcher(std::vector<UINT> keys)
    : combination(std::move(keys)) {
    OPM_ASSERT_AT(combination.size() > 0, "KeysCombinationCatcher", 12);
}

bool KeysCombinationCatcher::OnKey(UINT virtualKey) {
    // A sequence that outgrew the combination is dropped only now, so a
    // stray repeat of a combination key keeps the catch from completing.
    if (caughtKeys.size() > combination.size()) caughtKeys.clear();
    if (std::find(combination.begin(), combination.end(), virtualKey) != combination.end()) {
        caughtKeys.push_back(virtualKey);
        return true;
    }
    caughtKeys.clear();
    return false;
}

bool KeysCombinationCatcher::IsCaught() const {
    return caughtKeys == combination;
}

void KeysCombinationCatcher::Reset() {
    caughtKeys.clear();
}
