#include "PowerMeter/Results/OPMDocument.h"

#include <algorithm>
#include <ctime>

#include "Common/Settings/AppConfig.h"
#include "Platform/DebugOutput.h"
#include "Platform/FatalError.h"
#include "Platform/LocalTime.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Screens/ReferenceDisplay.h"

COPMDocument::~COPMDocument() {
    OPM_ASSERT_AT(observers.empty() && "Observer outlives the document", "OPMDocument", 30);
}

void COPMDocument::AddObserver(CPMDocumentObserver* observer) {
    OPM_ASSERT_AT(observer && "Observer shouldn't be null", "OPMDocument", 49);
    if (std::find(observers.begin(), observers.end(), observer) == observers.end())
        observers.push_back(observer);
}

void COPMDocument::RemoveObserver(CPMDocumentObserver* observer) {
    OPM_ASSERT_AT(observer && "Observer shouldn't be null", "OPMDocument", 43);
    observers.erase(std::remove(observers.begin(), observers.end(), observer), observers.end());
}

void COPMDocument::AddCurrentResult() {
    CPowerMeterDeviceManager& manager = PowerMeterDeviceManager();
    ZuOPMMeter* const meter = manager.GetPowerMeter();
    OPM_ASSERT_AT(meter && "A result needs a power meter", "OPMDocument", 70);

    OPMResult result;
    const std::int64_t now = _time64(nullptr);
    std::tm parts{};
    _localtime64_s(&parts, &now);
    result.second = parts.tm_sec;
    result.minute = parts.tm_min;
    result.hour = parts.tm_hour;
    result.day = parts.tm_mday;
    result.month = parts.tm_mon;  // stays 0-based in files and on screen
    result.year = parts.tm_year + 1900;
    result.weekDay = parts.tm_wday;
    result.yearDay = parts.tm_yday;
    result.isDst = parts.tm_isdst;

    const int slot = meter->GetActiveWaveLengthIndex();
    result.absPower = meter->GetLastPower();
    result.refLevel = IsReferenceDisplayOn() ? meter->GetReferenceLevel(slot) : 0.0f;
    result.waveLength = meter->GetWaveLength(slot);

    if (platform::Tracing())
        platform::Trace(L"result " + std::to_wstring(results.size() + 1) + L": " +
                        std::to_wstring(result.waveLength) + L" nm " +
                        std::to_wstring(result.absPower) + L" dBm");
    results.push_back(std::move(result));
    saved = false;
    Notify(kResultAdded);
}

void COPMDocument::AddResult(const OPMResult& result) {
    results.push_back(result);
}

void COPMDocument::SetDescription(size_t index, const std::wstring& description) {
    OPM_ASSERT_AT(index < results.size(), "OPMDocument", 115);
    if (results[index].description == description) return;
    results[index].description = description;
    saved = false;
}

const OPMResult& COPMDocument::GetResult(size_t index) const {
    OPM_ASSERT_AT(index < results.size(), "OPMDocument", 110);
    return results[index];
}

void COPMDocument::Notify(int changeCode) {
    // A snapshot: an observer that breaks the rule and (un)registers from its
    // handler must not invalidate the walk.
    const std::vector<CPMDocumentObserver*> current = observers;
    for (CPMDocumentObserver* observer : current) {
        OPM_ASSERT_AT(observer && "*it", "OPMDocument", 57);
        observer->OnDocumentChanged(this, changeCode);
    }
}
