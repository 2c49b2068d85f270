#include "PowerMeter/Screens/MainMenuDialog.h"

#include <algorithm>

#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/Utilities/LanguageResources.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/AutoSave.h"
#include "PowerMeter/Screens/OPMFileSystemDialog.h"
#include "PowerMeter/Screens/PMDialog.h"
#include "PowerMeter/Screens/PowerMeterParamDialog.h"
#include "PowerMeter/Screens/ResultFileDialog.h"

// Layout: the panel is a strip of soft keys over the bottom of the measuring
// screen, in the very place of the screen's own row. Outdoors at arm's length
// the reading above stays in view while the user decides to store it, the
// keys keep the size and places the hand already knows (F1..F4 under them,
// 152x58 touch targets), and a title line over the row says the keys have
// changed and how to get back. Store sits on F1, the key used most; quit on
// F4, as far from it as the row allows. The two results screens share F3
// through a column, which keeps the row at four keys and the results apart
// from the settings.
namespace {
constexpr UINT kStoreResultString = 61380;
constexpr UINT kStartRecordingString = 61381;
constexpr UINT kStopRecordingString = 61382;
constexpr UINT kParametersString = 61383;
constexpr UINT kQuitString = 61384;
constexpr UINT kTitleString = 61385;
constexpr UINT kRecordingTitleString = 61386;
constexpr UINT kResultsString = 61403;
constexpr UINT kResultsListString = 61404;
constexpr UINT kResultFilesString = 61405;
constexpr int IDC_TITLE = 1310;
constexpr int kKeyFontHeight = 17;

// The interval timed recording runs at; an index outside the table records
// at the first row's pace.
QString IntervalLabel() {
    const int index = AppConfig().GetValue<int>(autosave::AutoSaveIndexValue).value_or(0);
    const bool known = index >= 0 && index < static_cast<int>(autosave::kIntervals.size());
    return QString::fromWCharArray(autosave::kIntervals[known ? index : 0].label);
}

bool HasPowerMeter() {
    const CPowerMeterDeviceManager* manager = InstalledDeviceManager();
    return manager != nullptr && manager->GetPowerMeter() != nullptr;
}
}  // namespace

CMainMenuDialog::CMainMenuDialog(CPMDialog* owner) : CBaseDialog(IDD, owner), owner(owner) {
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    FontCreator::CreateCommonFont(keyFont, kKeyFontHeight, 700);
}

CMainMenuDialog::~CMainMenuDialog() = default;

bool CMainMenuDialog::OnInitDialog() {
    const bool result = CBaseDialog::OnInitDialog();
    // The screen underneath shows the battery already.
    GetBatteryBar().hide();
    OnMenuCommand(kStoreCommand, [this] { StoreResult(); });
    OnMenuCommand(kParametersCommand, [this] { OpenParameters(); });
    OnMenuCommand(kResultsCommand, [this] { OpenResults(); });
    OnMenuCommand(kQuitCommand, [this] { Quit(); });
    return result;
}

std::vector<CMenuKey*> CMainMenuDialog::GetMenuKeys() {
    CMenuCtrl& menu = GetMenuCtrl();
    auto add = [&](UINT command, UINT string) {
        auto key = std::make_unique<CTextMenuKey>(command, ResourceString(string), &keyFont);
        return static_cast<CTextMenuKey*>(menu.AddKey(std::move(key)));
    };
    storeKey = add(kStoreCommand, kStoreResultString);
    parametersKey = add(kParametersCommand, kParametersString);
    resultsKey = add(kResultsCommand, kResultsString);
    quitKey = add(kQuitCommand, kQuitString);
    return {storeKey, parametersKey, resultsKey, quitKey};
}

void CMainMenuDialog::OnSetTexts() {
    UpdateKeys();
}

void CMainMenuDialog::OnStatusHook(UINT /*timerId*/) {
    // A meter lost or a tick that found the setting off changes the keys
    // while the panel is up.
    if (storeKey != nullptr && isVisible()) UpdateKeys();
}

void CMainMenuDialog::UpdateKeys() {
    const bool autoSave = IsAutoSaveOn();
    const bool running = IsAutoSaveRunning();
    UINT caption = kStoreResultString;
    if (autoSave) caption = running ? kStopRecordingString : kStartRecordingString;
    storeKey->SetCaption(ResourceString(caption));
    // The short stop caption needs the title to say what it stops.
    QString title = ResourceString(autoSave && running ? kRecordingTitleString : kTitleString);
    // With timed recording on, the title also gives its pace.
    if (autoSave) title += QStringLiteral(" · ") + IntervalLabel();
    SetDlgItemText(IDC_TITLE, title);
    // Stopping needs no reading; storing and starting do.
    const bool enable = HasPowerMeter() || (autoSave && running);
    storeKey->setEnabled(enable);
    if (!enable && current == 0) SetCurrent(1);
}

void CMainMenuDialog::Open() {
    if (!Create()) return;
    UpdateKeys();
    Place();
    show();
    raise();
    activateWindow();
    FocusFirstEnabled();
}

void CMainMenuDialog::Close() {
    hide();
    if (owner != nullptr) {
        owner->raise();
        owner->activateWindow();
        owner->setFocus();
    }
}

bool CMainMenuDialog::eventFilter(QObject* watched, QEvent* event) {
    // In a desktop window the screen can move or change size; the panel stays
    // laid over its bottom.
    const bool moved = event->type() == QEvent::Move || event->type() == QEvent::Resize;
    if (watched == owner && moved && isVisible()) Place();
    return CBaseDialog::eventFilter(watched, event);
}

void CMainMenuDialog::Place() {
    if (owner == nullptr) return;
    const QPoint bottomLeft = owner->mapToGlobal(QPoint(0, owner->height() - height()));
    setFixedWidth(owner->width());
    move(bottomLeft);
}

std::vector<CTextMenuKey*> CMainMenuDialog::CommandKeys() const {
    return {storeKey, parametersKey, resultsKey, quitKey};
}

CTextMenuKey* CMainMenuDialog::FocusedKey() const {
    return CommandKeys()[current];
}

void CMainMenuDialog::SetCurrent(size_t index) {
    current = index;
    // The key's own focus draws it highlighted; the index is what counts, so
    // a panel that is not the active window still knows its key.
    CommandKeys()[current]->setFocus();
    for (CTextMenuKey* key : CommandKeys()) key->update();
}

void CMainMenuDialog::FocusFirstEnabled() {
    const std::vector<CTextMenuKey*> keys = CommandKeys();
    for (size_t index = 0; index < keys.size(); ++index) {
        if (keys[index]->isEnabled()) return SetCurrent(index);
    }
}

bool CMainMenuDialog::OnArrowPressed(int direction) {
    const std::vector<CTextMenuKey*> keys = CommandKeys();
    // Left and up go back, right and down on; the row wraps round.
    const size_t count = keys.size();
    const size_t step = (direction == 0 || direction == 1) ? count - 1 : 1;
    size_t index = current;
    for (size_t tries = 1; tries < count; ++tries) {
        index = (index + step) % count;
        if (keys[index]->isEnabled()) {
            SetCurrent(index);
            break;
        }
    }
    return true;
}

bool CMainMenuDialog::OnEnterPressed() {
    CTextMenuKey* focused = FocusedKey();
    if (focused->isEnabled()) focused->click();
    return true;
}

bool CMainMenuDialog::OnSpacePressed() {
    return OnEnterPressed();
}

bool CMainMenuDialog::OnEscapePressed() {
    Close();
    return true;
}

void CMainMenuDialog::StoreResult() {
    Close();
    OnStoreResultCommand();
}

void CMainMenuDialog::OpenParameters() {
    // The panel stays above its screen and would cover the dialog's keys.
    hide();
    CPowerMeterParamDialog parameters(owner);
    parameters.DoModal();
    // Back on the panel, whose store key may have changed with the setting.
    Open();
}

void CMainMenuDialog::OpenResults() {
    CSubmenuDialog column(resultsKey, VK_F3, this);
    column.AddKey(kResultsListCommand, ResourceString(kResultsListString));
    column.AddKey(kResultFilesCommand, ResourceString(kResultFilesString));
    if (column.Show() != IDOK) return;
    // The panel stays above its screen and would cover the dialog's keys.
    hide();
    bool loaded = false;
    if (column.GetSelectedId() == kResultsListCommand) {
        CResultFileDialog list(owner);
        list.DoModal();
    } else {
        COPMFileSystemDialog files(owner);
        loaded = files.DoModal() == IDOK;
    }
    if (owner != nullptr) owner->ShowResultsStatus();
    // After a load the measuring screen shows what came in; otherwise the
    // user is back where the results were asked for.
    loaded ? Close() : Open();
}

void CMainMenuDialog::Quit() {
    hide();
    if (owner != nullptr) owner->EndDialog(IDCANCEL);
}
