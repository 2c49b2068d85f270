#pragma once
// The parameters (template 399): timed recording on/off and its interval,
// the distance unit and the language pack. Up and down choose a field, left
// and right (or a touch on a field's arrows) change its value; OK writes the
// changed values through the settings store; Escape leaves every value as it
// was. A new language pack is taken at the next start, and the dialog says so.

#include <QFont>
#include <QString>
#include <array>
#include <string>
#include <vector>

#include "Common/Toolkit/BaseDialog.h"

class CTextMenuKey;

class CPowerMeterParamDialog : public CBaseDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 399;
    enum Field { kAutoSaveField, kIntervalField, kUnitField, kLanguageField, kFieldCount };
    // Controls of field f: name kNameBase+f, value kValueBase+f, arrows
    // kLessBase+f and kMoreBase+f.
    static constexpr int kNameBase = 1320;
    static constexpr int kValueBase = 1330;
    static constexpr int kLessBase = 1340;
    static constexpr int kMoreBase = 1350;
    static constexpr UINT kOkCommand = 1;
    static constexpr UINT kCancelCommand = 2;

    explicit CPowerMeterParamDialog(QWidget* parent = nullptr);
    ~CPowerMeterParamDialog() override;

protected:
    bool OnInitDialog() override;
    void OnSetTexts() override;
    std::vector<CMenuKey*> GetMenuKeys() override;
    bool OnArrowPressed(int direction) override;
    bool OnEnterPressed() override;
    bool OnEscapePressed() override;
    bool OnTabPressed() override { return true; }
    bool OnLButtonUp(QMouseEvent* message) override;

private:
    struct Choice {
        int value = 0;    // index into labels
        int initial = 0;  // as read at open
        std::vector<QString> labels;
        bool Changed() const { return value != initial; }
    };

    void ReadValues();
    void WriteChanged();
    void Select(int field);
    void Step(int field, int delta);
    void ShowField(int field);
    void Confirm();

    std::array<Choice, kFieldCount> choices;
    // The packs offered, in the order of the language field's labels.
    std::vector<std::wstring> languageFiles;
    int current = kAutoSaveField;
    QFont keyFont;
};
