#include "PowerMeter/Results/AutoSave.h"

#include <QTimer>
#include <memory>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/Logging.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/OPMDocument.h"

namespace {
// The thread timer of the user-interface thread; its Qt id stands for the
// identifier the system returned.
std::unique_ptr<QTimer> autoSaveTimer;
int autoSaveTimerId = 0;
bool autoSaveRunning = false;

void KillAutoSaveTimer() {
    if (autoSaveTimer && autoSaveTimer->timerId() == autoSaveTimerId) autoSaveTimer->stop();
}
}  // namespace

void OnStoreResultCommand() {
    const bool autoSave = IsAutoSaveOn();
    if (autoSave && !autoSaveRunning) {
        autoSaveRunning = true;
        if (!autoSaveTimer) {
            autoSaveTimer = std::make_unique<QTimer>();
            QObject::connect(autoSaveTimer.get(), &QTimer::timeout, [] { OnAutoSaveTimer(); });
        }
        autoSaveTimer->start(static_cast<int>(GetAutoSaveInterval()));
        autoSaveTimerId = autoSaveTimer->timerId();
    } else if (autoSave) {
        KillAutoSaveTimer();
        autoSaveRunning = false;
    } else {
        OPMDocument().AddCurrentResult();
    }
}

void OnAutoSaveTimer() {
    if (!IsAutoSaveOn()) KillAutoSaveTimer();
    // Left set even when the timer was just stopped: with the setting on
    // again, the first store command only clears it and the second starts.
    autoSaveRunning = true;
    OPMDocument().AddCurrentResult();
}

bool IsAutoSaveOn() {
    return AppConfig().GetValue<bool>(autosave::AutoSaveValue).value_or(false);
}

bool IsAutoSaveRunning() {
    return autoSaveRunning;
}

unsigned GetAutoSaveInterval() {
    const int index = AppConfig().GetValue<int>(autosave::AutoSaveIndexValue).value_or(0);
    if (index < 0 || index >= static_cast<int>(autosave::kIntervals.size())) {
        // The dialog writes 0..5 only; a hand-edited hive must not make the
        // table read past its end, so such an index means the first row.
        LogMessage("Autosave interval index out of range, using 00:10");
        return autosave::kIntervals.front().milliseconds;
    }
    return autosave::kIntervals[static_cast<size_t>(index)].milliseconds;
}

void ResetAutoSave() {
    autoSaveTimer.reset();
    autoSaveTimerId = 0;
    autoSaveRunning = false;
}
