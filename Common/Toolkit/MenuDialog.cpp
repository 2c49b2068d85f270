#include "Common/Toolkit/MenuDialog.h"

#include "Common/Toolkit/BitmapMenuKey.h"
#include "Common/Toolkit/NotifyEvent.h"

CMenuDialog::CMenuDialog(UINT templateId, QWidget* parent)
    : CLayoutableDialog(templateId, parent) {}

CMenuDialog::~CMenuDialog() = default;

bool CMenuDialog::OnInitDialog() {
    const bool result = CLayoutableDialog::OnInitDialog();
    menuCtrl.SubclassDlgItem(IDC_MENU_CTRL, this);
    menuCtrl.SetCurrentKeys(GetMenuKeys());
    SetTimer(kStatusTimerId, kStatusTimerPeriodMs);
    OnStatusHook(kStatusTimerId);
    LayoutOptions options;
    options.anchors = LayoutOptions::kLeft | LayoutOptions::kRight | LayoutOptions::kBottom;
    options.height = menuCtrl.height();
    Layouter().AddControl(menuCtrl, options);
    return result;
}

void CMenuDialog::OnTimer(UINT timerId) {
    if (timerId == kStatusTimerId) {
        OnStatusHook(timerId);
        return;
    }
    CLayoutableDialog::OnTimer(timerId);
}

bool CMenuDialog::OnNotify(WPARAM wParam, NMHDR* header) {
    if (header != nullptr && header->idFrom == menuCtrl.GetDlgCtrlID()) {
        const auto entry = commandTable.find(header->code);
        if (entry != commandTable.end()) {
            entry->second();
            return true;
        }
    }
    return CLayoutableDialog::OnNotify(wParam, header);
}

bool CMenuDialog::OnF1Pressed() {
    menuCtrl.PressKey(0);
    return true;
}

bool CMenuDialog::OnF2Pressed() {
    menuCtrl.PressKey(1);
    return true;
}

bool CMenuDialog::OnF3Pressed() {
    menuCtrl.PressKey(2);
    return true;
}

bool CMenuDialog::OnF4Pressed() {
    menuCtrl.PressKey(3);
    return true;
}

CMenuKey* CMenuDialog::CreateMenuKey(UINT keyId, UINT bitmapId) {
    return menuCtrl.AddKey(std::make_unique<CBitmapMenuKey>(keyId, bitmapId, bitmapId));
}

void CMenuDialog::OnMenuCommand(UINT commandId, std::function<void()> handler) {
    commandTable[commandId] = std::move(handler);
}
