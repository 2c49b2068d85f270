#pragma once
// The measuring screen (template 394): the power at the meter's port in dBm,
// as a linear value and, with the reference display on, in dB against the
// reference of the active wavelength; the active wavelength and the light
// source's state. Soft keys: wavelength, zero, reference, light source. Two
// hidden combinations open the manual calibration (Left Right F1) and the
// service submenu (Left Right F2). Values arrive only as WM_OPM_NEW_VALUE
// posted by the meter's worker; the screen has no timers of its own.

#include <QFont>
#include <string>
#include <vector>

#include "Common/Toolkit/ColorStatic.h"
#include "Common/Toolkit/KeysCombinationCatcher.h"
#include "PowerMeter/Screens/PMDialog.h"

class CLightSource;
class CMenuKey;
class QCloseEvent;
class ZuOPMMeter;

class COPMDialog : public CPMDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 394;
    static constexpr UINT kWavelengthKeyId = 544;
    static constexpr UINT kZeroKeyId = 545;
    static constexpr UINT kReferenceKeyId = 525;
    static constexpr UINT kLightSourceKeyId = 510;

    // Neither is owned; either may be null (an instrument without meter, a
    // device manager whose light source did not come up).
    COPMDialog(ZuOPMMeter* meter, CLightSource* lightSource, QWidget* parent = nullptr);
    ~COPMDialog() override;

protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool OnKeyDown(UINT virtualKey, QKeyEvent* message) override;
    // The application ends from the main menu only, never on a stray Escape.
    bool OnEscapePressed() override { return true; }
    std::vector<CMenuKey*> GetMenuKeys() override;
    void OnSetTexts() override;
    void DoDataExchange(bool saveAndValidate) override;
    // The window manager's close ends the screen as its own end does.
    void closeEvent(QCloseEvent* event) override;

private:
    void OnNewValue();
    void ShowPower(double nanoWatts, double dBm);
    void ShowReference(double dBm);

    void OnWavelengthKey();
    void OnZeroKey();
    void OnReferenceKey();
    void OnLightSourceKey();
    void RefreshLightSourceState();
    void RunManualCalibration();
    void RunServiceMenu();

    void ShowError(const wchar_t* text);
    void ShowControl(int controlId, bool visible);
    // Meter stopped and joined, its user state saved, lights off; once.
    void Shutdown();

    CColorStatic relativeValueStatic;
    CColorStatic absoluteValueStatic;
    CColorStatic linearValueStatic;
    QFont largeFont;
    QFont mediumFont;
    QFont smallFont;
    std::wstring referenceLevelText;
    std::wstring relativeValueText;
    std::wstring absoluteValueText;
    std::wstring linearValueText;
    std::wstring wavelengthText;
    ZuOPMMeter* opmMeter;
    CLightSource* lightSource;
    HWND subscription = nullptr;
    KeysCombinationCatcher calibrationCombination;
    KeysCombinationCatcher serviceCombination;
    CMenuKey* wavelengthKey = nullptr;
    CMenuKey* zeroKey = nullptr;
    CMenuKey* referenceKey = nullptr;
    CMenuKey* lightSourceKey = nullptr;
    bool shutDown = false;
};
