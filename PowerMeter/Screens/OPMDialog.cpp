#include "PowerMeter/Screens/OPMDialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/ProcessingDialog.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/Measurement/LightSource.h"
#include "PowerMeter/Measurement/LightSourceConfig.h"
#include "PowerMeter/Measurement/OPMMeter.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Screens/ReferenceDisplay.h"

namespace {

constexpr const char* kSourceFile = "OPMDialog";

// Controls of template 394.
constexpr int IDC_WAVELENGTH = 1004;
constexpr int IDC_REFERENCE_LEVEL = 1008;
constexpr int IDC_ABSOLUTE_VALUE = 1020;
constexpr int IDC_RELATIVE_VALUE = 1022;
constexpr int IDC_LINEAR_VALUE = 1023;
constexpr int IDC_RELATIVE_CAPTION = 1036;
constexpr int IDC_REFERENCE_CAPTION = 1038;
constexpr int IDC_NO_METER = 1112;
constexpr int IDC_LIGHT_SOURCE_STATE = 1113;
constexpr int IDC_LIGHT_SOURCE_CAPTION = 1114;

// String resources of the language pack.
constexpr UINT IDS_RELATIVE_CAPTION = 50;
constexpr UINT IDS_REFERENCE_CAPTION = 51;
constexpr UINT IDS_NO_METER = 53;
constexpr UINT IDS_ALL_LASERS_OFF = 57;
constexpr UINT IDS_REFERENCE_FROM_INPUT = 61331;
constexpr UINT IDS_REFERENCE_ENTER = 61332;
constexpr UINT IDS_REFERENCE_SHOW = 61333;
constexpr UINT IDS_REFERENCE_HIDE = 61334;
constexpr UINT IDS_MODE_CONTINUOUS = 61340;
constexpr UINT IDS_MODE_MODULATED = 61341;

constexpr COLORREF kAbsoluteColour = 0x0000FF;
constexpr COLORREF kLinearColour = 0xFF0000;

// The system's own texts.
constexpr const char* kWavelengthFormat = "%d nm";
constexpr const char* kReferenceLevelFormat = "%7.2lf dBm";
constexpr const char* kRelativeFormat = "%+7.2lf dB";
constexpr const char* kAbsoluteFormat = "%7.3lf dBm";
constexpr const char* kBelowFloorText = "<-75.0 dBm";
constexpr const char* kLinearFormatFormat = "%%%d.%df %s";
constexpr const char* kAboveRangeFormat = ">9999 %s";
constexpr const char* kLaserOn = "ON";
constexpr const char* kLaserOff = "OFF";
constexpr const char* kModeOneMark = " *";
constexpr const wchar_t* kWarningTitle = L"Warning!";
constexpr const wchar_t* kLitInputWarning = L">-50dBm!";
constexpr const wchar_t* kErrorTitle = L"Error";
constexpr const wchar_t* kReferenceEditorTitle = L"Ref = ";
constexpr const wchar_t* kCalibrationEditorTitle = L"P, dBm";
constexpr const wchar_t* kManualCalibrationFailed = L"Error ocurred during manual calibrating";
constexpr const wchar_t* kFactoryResetFailed =
    L"Error during factory calibration data changing to def";
constexpr const wchar_t* kNoOPMWriteFailed = L"Error during NoOPM key";
constexpr const wchar_t* kFactoryReloadFailed = L"Error during factory calibration data rereading";

// Zeroing needs a covered input: anything at or above this is light.
constexpr float kZeroLimit = -50.0f;
constexpr double kBelowFloor = -75.0;

struct LinearUnit {
    double divisor;
    const char* name;
};
// First row whose threshold the value reaches, in nW.
constexpr struct {
    double threshold;
    LinearUnit unit;
} kLinearUnits[] = {{1000000.0, {1000000.0, "mW"}}, {1000.0, {1000.0, "uW"}}, {0.0, {1.0, "nW"}}};

// Service submenu entries.
enum ServiceId : UINT { kFactorySet1 = 1, kFactorySet2 = 2, kNoOPMOff = 3, kNoOPMOn = 4 };
constexpr struct {
    UINT id;
    const char* caption;
} kServiceKeys[] = {
    {kFactorySet1, "PM1"}, {kFactorySet2, "PM2"}, {kNoOPMOff, "NoOPM=0"}, {kNoOPMOn, "NoOPM=1"}};

template <typename... Args>
std::wstring Format(const char* format, Args... args) {
    char buffer[128];
    std::snprintf(buffer, sizeof buffer, format, args...);
    return QString::fromUtf8(buffer).toStdWString();
}

QString WavelengthCaption(int wavelength) {
    return QString::fromStdWString(Format(kWavelengthFormat, wavelength));
}

}  // namespace

COPMDialog::COPMDialog(ZuOPMMeter* meter, CLightSource* lightSource, QWidget* parent)
    : CPMDialog(IDD, parent),
      opmMeter(meter),
      lightSource(lightSource),
      calibrationCombination({VK_LEFT, VK_RIGHT, VK_F1}),
      serviceCombination({VK_LEFT, VK_RIGHT, VK_F2}) {
    OnMenuCommand(kWavelengthKeyId, [this] { OnWavelengthKey(); });
    OnMenuCommand(kZeroKeyId, [this] { OnZeroKey(); });
    OnMenuCommand(kReferenceKeyId, [this] { OnReferenceKey(); });
    OnMenuCommand(kLightSourceKeyId, [this] { OnLightSourceKey(); });
}

COPMDialog::~COPMDialog() {
    Shutdown();
}

std::vector<CMenuKey*> COPMDialog::GetMenuKeys() {
    wavelengthKey = CreateMenuKey(kWavelengthKeyId, kWavelengthKeyId);
    zeroKey = CreateMenuKey(kZeroKeyId, kZeroKeyId);
    referenceKey = CreateMenuKey(kReferenceKeyId, kReferenceKeyId);
    lightSourceKey = CreateMenuKey(kLightSourceKeyId, kLightSourceKeyId);
    return {wavelengthKey, zeroKey, referenceKey, lightSourceKey};
}

void COPMDialog::OnSetTexts() {
    SetDlgItemText(IDC_RELATIVE_CAPTION, ResourceString(IDS_RELATIVE_CAPTION));
    SetDlgItemText(IDC_REFERENCE_CAPTION, ResourceString(IDS_REFERENCE_CAPTION));
}

bool COPMDialog::OnInitDialog() {
    const bool result = CPMDialog::OnInitDialog();

    FontCreator::CreateFont(largeFont, 28, 700);
    FontCreator::CreateFont(mediumFont, 24, 700);
    FontCreator::CreateCommonFont(smallFont, 16, 700);

    OPM_ASSERT(relativeValueStatic.SubclassDlgItem(IDC_RELATIVE_VALUE, this));
    OPM_ASSERT(absoluteValueStatic.SubclassDlgItem(IDC_ABSOLUTE_VALUE, this));
    OPM_ASSERT(linearValueStatic.SubclassDlgItem(IDC_LINEAR_VALUE, this));
    absoluteValueStatic.setFont(largeFont);
    absoluteValueStatic.SetTextColor(kAbsoluteColour);
    linearValueStatic.setFont(largeFont);
    linearValueStatic.SetTextColor(kLinearColour);
    relativeValueStatic.setFont(largeFont);
    for (const auto& [id, font] : {std::pair{IDC_WAVELENGTH, &mediumFont},
                                   {IDC_REFERENCE_LEVEL, &mediumFont},
                                   {IDC_RELATIVE_CAPTION, &smallFont},
                                   {IDC_REFERENCE_CAPTION, &smallFont},
                                   {IDC_NO_METER, &largeFont},
                                   {IDC_LIGHT_SOURCE_STATE, &largeFont}}) {
        QWidget* control = GetDlgItem(id);
        OPM_ASSERT(control);
        control->setFont(*font);
    }
    SetDlgItemText(IDC_NO_METER, QString());
    SetDlgItemText(IDC_LIGHT_SOURCE_STATE, QString());

    if (opmMeter != nullptr) {
        subscription = WindowHandleOf(this);
        opmMeter->Subscribe(subscription);
        wavelengthText = Format(kWavelengthFormat,
                                opmMeter->GetWaveLength(opmMeter->GetActiveWaveLengthIndex()));
        opmMeter->Start();
    } else {
        for (int id : {IDC_WAVELENGTH, IDC_ABSOLUTE_VALUE, IDC_LINEAR_VALUE})
            ShowControl(id, false);
        SetDlgItemText(IDC_NO_METER, ResourceString(IDS_NO_METER));
        ShowControl(IDC_NO_METER, true);
    }

    const bool hasMeter = opmMeter != nullptr;
    for (CMenuKey* key : {wavelengthKey, zeroKey, referenceKey}) key->setEnabled(hasMeter);
    lightSourceKey->setEnabled(lightSource != nullptr && lightSource->GetLasersNum() > 0);

    if (lightSource != nullptr) RefreshLightSourceState();
    UpdateData(false);
    return result;
}

void COPMDialog::DoDataExchange(bool saveAndValidate) {
    CPMDialog::DoDataExchange(saveAndValidate);
    DdxText(saveAndValidate, IDC_REFERENCE_LEVEL, referenceLevelText);
    DdxText(saveAndValidate, IDC_RELATIVE_VALUE, relativeValueText);
    DdxText(saveAndValidate, IDC_ABSOLUTE_VALUE, absoluteValueText);
    DdxText(saveAndValidate, IDC_LINEAR_VALUE, linearValueText);
    DdxText(saveAndValidate, IDC_WAVELENGTH, wavelengthText);
}

bool COPMDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_OPM_NEW_VALUE) return CPMDialog::OnMessage(message, wParam, lParam);
    // A value still queued when the screen shut down is not shown.
    if (opmMeter != nullptr && !shutDown) OnNewValue();
    return true;
}

void COPMDialog::OnNewValue() {
    const double dBm = opmMeter->GetLastPower();
    // The linear value carries single precision only.
    const double nanoWatts = static_cast<float>(std::pow(10.0, dBm * 0.1) * 1e6);
    ShowPower(nanoWatts, dBm);
    ShowReference(dBm);
}

void COPMDialog::ShowPower(double nanoWatts, double dBm) {
    nanoWatts = std::max(nanoWatts, 0.0);
    const LinearUnit* unit = nullptr;
    for (const auto& row : kLinearUnits) {
        if (nanoWatts >= row.threshold) {
            unit = &row.unit;
            break;
        }
    }
    // Only a NaN matches no row.
    if (unit == nullptr) FatalAssertion("false && \"Unrecheable code\"", kSourceFile, 509);
    const double value = nanoWatts / unit->divisor;
    if (value > 9999.0) {
        linearValueText = Format(kAboveRangeFormat, unit->name);
    } else {
        // Four significant digits whatever the unit; counted before rounding.
        const int digitsBeforePoint = value < 1.0 ? 1 : static_cast<int>(std::log10(value) + 1.0);
        OPM_ASSERT(digitsBeforePoint <= 4);
        char format[32];
        std::snprintf(format, sizeof format, kLinearFormatFormat, digitsBeforePoint,
                      4 - digitsBeforePoint, unit->name);
        linearValueText = Format(format, value);
    }
    SetDlgItemText(IDC_LINEAR_VALUE, QString::fromStdWString(linearValueText));

    absoluteValueText =
        dBm < kBelowFloor ? Format("%s", kBelowFloorText) : Format(kAbsoluteFormat, dBm);
    SetDlgItemText(IDC_ABSOLUTE_VALUE, QString::fromStdWString(absoluteValueText));
}

void COPMDialog::ShowReference(double dBm) {
    const bool on = IsReferenceDisplayOn();
    for (int id :
         {IDC_REFERENCE_CAPTION, IDC_RELATIVE_CAPTION, IDC_REFERENCE_LEVEL, IDC_RELATIVE_VALUE})
        ShowControl(id, on);
    if (on) {
        const double reference = opmMeter->GetReferenceLevel(opmMeter->GetActiveWaveLengthIndex());
        referenceLevelText = Format(kReferenceLevelFormat, reference);
        relativeValueText = Format(kRelativeFormat, dBm - reference);
    } else {
        referenceLevelText.clear();
    }
    UpdateData(false);
}

void COPMDialog::OnWavelengthKey() {
    if (opmMeter == nullptr) FatalAssertion("opmMeter.get()", kSourceFile, 158);
    CSubmenuDialog column(wavelengthKey, VK_F1, this);
    for (int slot = 0; slot < opmMeter->GetWavelengthsNum(); ++slot)
        column.AddKey(static_cast<UINT>(slot), WavelengthCaption(opmMeter->GetWaveLength(slot)));
    const int currWavelen = opmMeter->GetActiveWaveLengthIndex();
    OPM_ASSERT_AT(currWavelen < opmMeter->GetWavelengthsNum(), kSourceFile, 167);
    column.SetCurrentKey(static_cast<size_t>(currWavelen));
    if (column.Show() != IDOK) return;

    const int chosen = static_cast<int>(column.GetSelectedId());
    opmMeter->SetActiveWaveLengthIndex(chosen);
    wavelengthText = Format(kWavelengthFormat, opmMeter->GetWaveLength(chosen));
    UpdateData(false);
}

void COPMDialog::OnZeroKey() {
    if (opmMeter == nullptr) return;
    if (!(opmMeter->GetLastPower() < kZeroLimit)) {
        CMessageBoxEx box(kLitInputWarning, kWarningTitle, 0, this);
        box.SetKind(CMessageBoxEx::Kind::Warning);
        box.DoModal();
        return;
    }
    QWidget* foreground = QApplication::activeWindow();
    CProcessingDialog busy(foreground != nullptr ? foreground : this);
    busy.Create();
    opmMeter->ZeroCalibration();
    busy.Close();
}

void COPMDialog::OnReferenceKey() {
    if (opmMeter == nullptr) return;
    const bool displayOn = IsReferenceDisplayOn();
    CSubmenuDialog column(referenceKey, VK_F3, this);
    column.AddKey(0, ResourceString(IDS_REFERENCE_ENTER));
    column.AddKey(1, ResourceString(IDS_REFERENCE_FROM_INPUT));
    column.AddKey(2, ResourceString(displayOn ? IDS_REFERENCE_HIDE : IDS_REFERENCE_SHOW));
    if (column.Show() != IDOK) return;

    const int slot = opmMeter->GetActiveWaveLengthIndex();
    switch (column.GetSelectedId()) {
        case 0: {
            SetReferenceDisplay(true);
            CChangeValueDialog editor(kReferenceEditorTitle, opmMeter->GetReferenceLevel(slot),
                                      -99.0, 99.0, 2, this);
            // Cancel gives the start value back, so storing it is harmless.
            editor.DoModal();
            opmMeter->SetReferenceLevel(slot, static_cast<float>(editor.GetValue()));
            opmMeter->SaveUserState();
            break;
        }
        case 1:
            SetReferenceDisplay(true);
            opmMeter->SetReferenceLevel(slot, opmMeter->GetLastPower());
            opmMeter->SaveUserState();
            break;
        case 2:
            SetReferenceDisplay(!displayOn);
            break;
        default:
            break;
    }
}

void COPMDialog::OnLightSourceKey() {
    OPM_ASSERT(lightSource && "Was device properly initialized ?");
    const size_t lasers = lightSource->GetLasersNum();
    CSubmenuDialog column(lightSourceKey, VK_F4, this);
    for (size_t laser = 0; laser < lasers; ++laser) {
        const CLightSource::LaserState state = lightSource->GetLaserState(laser);
        const std::wstring caption = Format("%d", lightSource->GetLaserWaveLength(laser)) + L" " +
                                     Format("%s%s", state.on ? kLaserOn : kLaserOff,
                                            state.on && state.mode == 1 ? kModeOneMark : "");
        column.AddKey(static_cast<UINT>(laser), QString::fromStdWString(caption));
    }
    if (lightSource->IsAnyLaserOn())
        column.AddKey(static_cast<UINT>(lasers), ResourceString(IDS_ALL_LASERS_OFF));
    if (column.Show() == IDOK) {
        const size_t chosen = column.GetSelectedId();
        if (chosen < lasers) {
            OPM_ASSERT_AT(lightSource, kSourceFile, 327);
            // Each choice of one laser steps off -> mode 0 -> mode 1 -> off.
            const CLightSource::LaserState state = lightSource->GetLaserState(chosen);
            if (!state.on)
                lightSource->SwitchOn(chosen, 0);
            else if (state.mode != 1)
                lightSource->SwitchOn(chosen, 1);
            else
                lightSource->SwitchOff();
        } else {
            lightSource->SwitchOff();
        }
    }
    RefreshLightSourceState();
}

void COPMDialog::RefreshLightSourceState() {
    QString stateText;
    bool anyOn = false;
    // With several lasers on, the last one in index order is shown.
    for (size_t laser = 0; laser < lightSource->GetLasersNum(); ++laser) {
        const CLightSource::LaserState state = lightSource->GetLaserState(laser);
        if (!state.on) continue;
        anyOn = true;
        stateText = QString::number(lightSource->GetLaserWaveLength(laser)) + QStringLiteral(" ") +
                    ResourceString(state.mode != 1 ? IDS_MODE_CONTINUOUS : IDS_MODE_MODULATED);
    }
    if (anyOn) SetDlgItemText(IDC_LIGHT_SOURCE_STATE, stateText);
    ShowControl(IDC_LIGHT_SOURCE_CAPTION, anyOn);
    ShowControl(IDC_LIGHT_SOURCE_STATE, anyOn);
}

bool COPMDialog::OnKeyDown(UINT virtualKey, QKeyEvent* /*message*/) {
    calibrationCombination.OnKey(virtualKey);
    serviceCombination.OnKey(virtualKey);
    if (calibrationCombination.IsCaught()) {
        calibrationCombination.Reset();
        RunManualCalibration();
        return true;
    }
    if (serviceCombination.IsCaught()) {
        serviceCombination.Reset();
        RunServiceMenu();
        return true;
    }
    return false;
}

void COPMDialog::RunManualCalibration() {
    ZuOPMMeter* meter = PowerMeterDeviceManager().GetPowerMeter();
    if (meter == nullptr) return;
    CChangeValueDialog editor(kCalibrationEditorTitle, meter->GetLastPower(), -99.9, 99.99, 3,
                              this);
    if (editor.DoModal() != IDOK) return;
    if (!meter->CalibrateToReference(editor.GetValue())) ShowError(kManualCalibrationFailed);
}

void COPMDialog::RunServiceMenu() {
    CSubmenuDialog column(wavelengthKey, VK_F2, this);
    for (const auto& key : kServiceKeys) column.AddKey(key.id, QString::fromLatin1(key.caption));
    if (column.Show() != IDOK) return;

    const UINT chosen = column.GetSelectedId();
    const std::string path = CPowerMeterDeviceManager::IniPath();
    const std::wstring modelTag = PowerMeterDeviceManager().GetHardwareId();
    if ((chosen == kFactorySet1 || chosen == kFactorySet2) && opmMeter != nullptr) {
        if (!opmMeter->ResetFactoryCalibrationToDefault(path.c_str(), static_cast<int>(chosen)))
            ShowError(kFactoryResetFailed);
    }
    if (chosen == kNoOPMOff || chosen == kNoOPMOn) {
        if (!WriteNoOPM(path.c_str(), modelTag, static_cast<int>(chosen - kNoOPMOff)))
            ShowError(kNoOPMWriteFailed);
    }
    if (opmMeter != nullptr && !opmMeter->ReloadFactoryCalibration(path.c_str()))
        ShowError(kFactoryReloadFailed);
}

void COPMDialog::ShowError(const wchar_t* text) {
    CMessageBoxEx box(text, kErrorTitle, 0, this);
    box.SetKind(CMessageBoxEx::Kind::Error);
    box.DoModal();
}

void COPMDialog::ShowControl(int controlId, bool visible) {
    if (QWidget* control = GetDlgItem(controlId)) control->setVisible(visible);
}

void COPMDialog::OnDestroy() {
    CPMDialog::OnDestroy();
    Shutdown();
}

void COPMDialog::closeEvent(QCloseEvent* event) {
    Shutdown();
    CPMDialog::closeEvent(event);
}

void COPMDialog::Shutdown() {
    // A screen that never initialised started nothing.
    if (shutDown || !IsCreated()) return;
    shutDown = true;
    if (opmMeter != nullptr) {
        if (subscription != nullptr) opmMeter->Unsubscribe(subscription);
        opmMeter->StopAndWait();
        opmMeter->SaveUserState();
    }
    if (lightSource != nullptr) lightSource->SwitchOff();
}
