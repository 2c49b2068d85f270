#include "PowerMeter/Screens/PowerMeterParamDialog.h"

#include <QAbstractButton>
#include <QMouseEvent>
#include <algorithm>
#include <cwctype>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/CommonConfig.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Utilities/LanguageResources.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/AutoSave.h"
#include "Support/LenUnit.h"

namespace {
// Each pack is named in its own language, so a user who cannot read the
// current one still finds theirs.
struct LanguagePack {
    const wchar_t* file;
    const char* name;
};
constexpr std::array<LanguagePack, 2> kLanguagePacks{
    {{L"english.rcc", "English"}, {L"german.rcc", "Deutsch"}}};

constexpr UINT kOffString = 61390;
constexpr UINT kOnString = 61391;
constexpr UINT kFirstUnitString = 61392;  // km, m, ft, kf, mi: 61392..61396
constexpr UINT kOkString = 61397;
constexpr UINT kCancelString = 61398;
constexpr UINT kNextStartString = 61399;
constexpr int kUnitCount = duMI + 1;
constexpr int kKeyFontHeight = 17;

const QString kValueStyle =
    QStringLiteral("QLabel { border: 2px solid #303030; background: #ffffff; }");
const QString kCurrentValueStyle =
    QStringLiteral("QLabel { border: 4px solid #000000; background: #ffcc00; }");

bool SameFile(const std::wstring& a, const std::wstring& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](wchar_t x, wchar_t y) { return std::towlower(x) == std::towlower(y); });
}
}  // namespace

CPowerMeterParamDialog::CPowerMeterParamDialog(QWidget* parent) : CBaseDialog(IDD, parent) {
    FontCreator::CreateCommonFont(keyFont, kKeyFontHeight, 700);
}

CPowerMeterParamDialog::~CPowerMeterParamDialog() = default;

bool CPowerMeterParamDialog::OnInitDialog() {
    const bool result = CBaseDialog::OnInitDialog();
    OnMenuCommand(kOkCommand, [this] { Confirm(); });
    OnMenuCommand(kCancelCommand, [this] { EndDialog(IDCANCEL); });
    for (int field = 0; field < kFieldCount; ++field) {
        for (const auto& [base, delta] : {std::pair{kLessBase, -1}, std::pair{kMoreBase, 1}}) {
            auto* arrow = qobject_cast<QAbstractButton*>(GetDlgItem(base + field));
            if (arrow == nullptr) continue;
            // The dialog's arrow keys move the fields, never the buttons.
            arrow->setFocusPolicy(Qt::NoFocus);
            connect(arrow, &QAbstractButton::clicked, this, [this, field, delta = delta] {
                Select(field);
                Step(field, delta);
            });
        }
    }
    return result;
}

std::vector<CMenuKey*> CPowerMeterParamDialog::GetMenuKeys() {
    CMenuCtrl& menu = GetMenuCtrl();
    CMenuKey* ok = menu.AddKey(
        std::make_unique<CTextMenuKey>(kOkCommand, ResourceString(kOkString), &keyFont));
    CMenuKey* cancel = menu.AddKey(
        std::make_unique<CTextMenuKey>(kCancelCommand, ResourceString(kCancelString), &keyFont));
    return {ok, nullptr, nullptr, cancel};
}

void CPowerMeterParamDialog::OnSetTexts() {
    ReadValues();
    for (int field = 0; field < kFieldCount; ++field) ShowField(field);
    Select(kAutoSaveField);
}

void CPowerMeterParamDialog::ReadValues() {
    CAppConfig& config = AppConfig();

    Choice& autoSave = choices[kAutoSaveField];
    autoSave.labels = {ResourceString(kOffString), ResourceString(kOnString)};
    autoSave.value = IsAutoSaveOn() ? 1 : 0;

    Choice& interval = choices[kIntervalField];
    interval.labels.clear();
    for (const autosave::Interval& row : autosave::kIntervals)
        interval.labels.push_back(QString::fromWCharArray(row.label));
    // A stored index outside the table records at the first row's pace, so
    // that is what the field shows.
    const int index = config.GetValue<int>(autosave::AutoSaveIndexValue).value_or(0);
    interval.value =
        index >= 0 && index < static_cast<int>(autosave::kIntervals.size()) ? index : 0;

    Choice& unit = choices[kUnitField];
    unit.labels.clear();
    for (int row = 0; row < kUnitCount; ++row)
        unit.labels.push_back(ResourceString(kFirstUnitString + static_cast<UINT>(row)));
    unit.value = GetDistanceUnit(config);

    Choice& language = choices[kLanguageField];
    language.labels.clear();
    languageFiles.clear();
    for (const LanguagePack& pack : kLanguagePacks) {
        language.labels.push_back(QString::fromLatin1(pack.name));
        languageFiles.emplace_back(pack.file);
    }
    const std::wstring stored = config.GetString(DefaultLanguageValue, L"");
    const auto known =
        std::find_if(languageFiles.begin(), languageFiles.end(),
                     [&](const std::wstring& file) { return SameFile(file, stored); });
    if (known != languageFiles.end()) {
        language.value = static_cast<int>(known - languageFiles.begin());
    } else {
        // A pack installed by other means stays selectable by its file name.
        language.labels.push_back(QString::fromStdWString(stored));
        languageFiles.push_back(stored);
        language.value = static_cast<int>(languageFiles.size()) - 1;
    }

    for (Choice& choice : choices) choice.initial = choice.value;
}

void CPowerMeterParamDialog::WriteChanged() {
    CAppConfig& config = AppConfig();
    if (choices[kAutoSaveField].Changed())
        config.SetValue<bool>(autosave::AutoSaveValue, choices[kAutoSaveField].value != 0);
    if (choices[kIntervalField].Changed())
        config.SetValue<int>(autosave::AutoSaveIndexValue, choices[kIntervalField].value);
    if (choices[kUnitField].Changed()) {
        config.SetValue<int>(UIDistanceUnitValue, choices[kUnitField].value);
        // Distances shown from now on follow the new unit.
        if (TLenUnit* lenUnit = InstalledLenUnit()) lenUnit->SetUnit(choices[kUnitField].value);
    }
    if (choices[kLanguageField].Changed()) {
        const size_t pack = static_cast<size_t>(choices[kLanguageField].value);
        config.SetValue<std::wstring>(DefaultLanguageValue, languageFiles[pack]);
    }
}

void CPowerMeterParamDialog::Confirm() {
    WriteChanged();
    // The pack in use holds every text already on the screens, so a new one
    // can only be loaded at start-up.
    if (choices[kLanguageField].Changed()) CMessage(kNextStartString, this).DoModal();
    EndDialog(IDOK);
}

void CPowerMeterParamDialog::ShowField(int field) {
    const Choice& choice = choices[static_cast<size_t>(field)];
    SetDlgItemText(kValueBase + field, choice.labels[static_cast<size_t>(choice.value)]);
}

void CPowerMeterParamDialog::Select(int field) {
    current = field;
    for (int row = 0; row < kFieldCount; ++row) {
        if (QWidget* value = GetDlgItem(kValueBase + row))
            value->setStyleSheet(row == current ? kCurrentValueStyle : kValueStyle);
    }
}

void CPowerMeterParamDialog::Step(int field, int delta) {
    Choice& choice = choices[static_cast<size_t>(field)];
    const int count = static_cast<int>(choice.labels.size());
    // Values go round: the last interval is one step back from the first.
    choice.value = (choice.value + delta + count) % count;
    ShowField(field);
}

bool CPowerMeterParamDialog::OnArrowPressed(int direction) {
    switch (direction) {
        case 0:
            Step(current, -1);
            break;
        case 2:
            Step(current, 1);
            break;
        case 1:
            Select((current + kFieldCount - 1) % kFieldCount);
            break;
        default:
            Select((current + 1) % kFieldCount);
            break;
    }
    return true;
}

bool CPowerMeterParamDialog::OnEnterPressed() {
    Confirm();
    return true;
}

bool CPowerMeterParamDialog::OnEscapePressed() {
    EndDialog(IDCANCEL);
    return true;
}

bool CPowerMeterParamDialog::OnLButtonUp(QMouseEvent* message) {
    // A touch on a field's name or value chooses the field; the arrows
    // handle their own touches.
    const QPoint global = message->globalPosition().toPoint();
    for (int field = 0; field < kFieldCount; ++field) {
        for (const int id : {kNameBase + field, kValueBase + field}) {
            const QWidget* control = GetDlgItem(id);
            if (control != nullptr && control->rect().contains(control->mapFromGlobal(global))) {
                Select(field);
                return true;
            }
        }
    }
    return false;
}
