#include "PowerMeter/Results/OPMDocument.h"

#include <QApplication>
#include <QPointer>
#include <QWidget>
#include <algorithm>
#include <boost/property_tree/exceptions.hpp>
#include <boost/property_tree/string_path.hpp>
#include <ctime>

#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/DialogResults.h"
#include "Common/Toolkit/QuestionDialog.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/Utilities/FileNameCheck.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/DebugOutput.h"
#include "Platform/FatalError.h"
#include "Platform/LocalTime.h"
#include "Platform/WideText.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/ResultFile.h"
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

bool COPMDocument::SaveAs(const std::wstring& targetDirectory) {
    constexpr UINT IDS_FILE_NAME = 34977;
    const std::vector<std::wstring> extensions{L"txt"};
    const QPointer<QWidget> focus = QApplication::focusWidget();
    std::wstring name;
    {
        CVirtualKeyboard keyboard(ResourceString(IDS_FILE_NAME).toStdWString(), L"temp",
                                  focus ? focus->window() : QApplication::activeWindow());
        keyboard.SetNameCheck(CFileNameCheck(targetDirectory, extensions, {L"meas", L"trace"}));
        const int answer = keyboard.DoModal();
        if (focus) focus->setFocus();
        if (answer != IDOK) return false;
        name = keyboard.GetText();
    }
    fileName = name + L"." + extensions.front();
    directory = targetDirectory;
    const std::wstring fullPath = targetDirectory + L"/" + fileName;
    resultfile::Write(platform::ToUtf8(fullPath), results);
    saved = true;
    AppConfig().SetValue(LastSavedPathValue, fullPath);
    return true;
}

bool COPMDocument::Load(const std::wstring& path) {
    const std::string narrowPath = platform::ToUtf8(path);
    std::vector<OPMResult> loaded;
    const resultfile::Scan scan = resultfile::Walk(
        resultfile::ReadChecked(narrowPath), narrowPath, [&](resultfile::RawResult&& element) {
            if (std::optional<OPMResult> result = resultfile::ParseResult(element))
                loaded.push_back(std::move(*result));
        });
    if (!scan.hasResults)
        throw boost::property_tree::ptree_bad_path("No such node",
                                                   boost::property_tree::path("OLTS"));
    // Taken before the checks below: a refused load still names the file.
    const std::size_t slash = path.rfind(L'/');
    fileName = slash == std::wstring::npos ? path : path.substr(slash + 1);
    directory = slash == std::wstring::npos ? std::wstring() : path.substr(0, slash + 1);
    if (scan.count == 0) return false;
    if (!results.empty() &&
        !CQuestionDialog::Ask(L"DO YOU REALLY WANT TO OPEN FILE?UNSAVED DATA WILL BE LOST!",
                              QApplication::activeWindow()))
        return false;
    // Appended in file order to the emptied results, without notifying.
    results = std::move(loaded);
    return true;
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
