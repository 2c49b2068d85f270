#include "Common/Toolkit/MenuCtrl.h"

#include <QCoreApplication>

#include "Common/Toolkit/BitmapMenuKey.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/NotifyEvent.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

namespace {
template <class T, size_t N>
constexpr size_t lenof(const std::array<T, N>&) {
    return N;
}
}  // namespace

CMenuCtrl::CMenuCtrl() = default;

CMenuCtrl::~CMenuCtrl() {
    // The keys go before the widget so that Qt does not delete them as children.
    currentKeys.fill(nullptr);
    keysStorage.clear();
}

void CMenuCtrl::SubclassDlgItem(UINT id, QWidget* parent) {
    QWidget* placeholder = GetDlgItem(parent, static_cast<int>(id));
    OPM_ASSERT(placeholder && "Menu placeholder is missing from the dialog template");
    setParent(placeholder->parentWidget());
    setObjectName(placeholder->objectName());
    setGeometry(placeholder->geometry());
    stackUnder(placeholder);
    controlId = id;
    // A framed placeholder (the old client edge) loses its frame: the keys
    // draw their own.
    delete placeholder;
    PreSubclassWindow();
    show();
}

void CMenuCtrl::PreSubclassWindow() {
    for (unsigned slot = 0; slot < keysNum; ++slot) {
        CMenuKey* blank =
            AddKey(std::make_unique<CBitmapMenuKey>(0, kBlankKeyBitmap, kBlankKeyBitmap));
        blank->show();
        currentKeys[slot] = blank;
    }
    setWindowTitle(QString());
    Layout();
}

CMenuKey* CMenuCtrl::AddKey(std::unique_ptr<CMenuKey> key) {
    OPM_ASSERT_AT(key.get() && "Key shouldn't be null", "MenuCtrl", 179);
    CMenuKey* added = key.get();
    keysStorage.push_back(std::move(key));
    const UINT keyId = nextKeyId;
    const bool creationRes = added->Create(this, keyId);
    OPM_ASSERT_AT(creationRes && "Can't create WinAPI button", "MenuCtrl", 247);
    ++nextKeyId;
    added->setFocusPolicy(Qt::NoFocus);
    connect(added, &CMenuKey::clicked, this, [this, keyId] { OnKeyCommand(keyId); });
    added->hide();
    return added;
}

void CMenuCtrl::PutIntoSlot(unsigned slot, CMenuKey* key) {
    CMenuKey* displaced = currentKeys[slot];
    currentKeys[slot] = key;
    key->SetOverlay(SlotOverlayId(slot));
    if (displaced != nullptr && displaced != key && !KeyInCurrents(displaced)) displaced->hide();
}

void CMenuCtrl::SetCurrentKeys(const std::vector<CMenuKey*>& keys) {
    OPM_ASSERT(keys.size() <= keysNum && "A menu has four slots");
    std::vector<CMenuKey*> padded(keys);
    padded.resize(keysNum, nullptr);
    for (unsigned slot = 0; slot < keysNum; ++slot) {
        if (padded[slot] == nullptr) continue;
        OPM_ASSERT(KeyInStorage(padded[slot]) &&
                   "Key should be owned by this instance of CMenuCtrl");
        PutIntoSlot(slot, padded[slot]);
    }
    Layout();
}

void CMenuCtrl::ReplaceKey(unsigned oldKeyIndex, CMenuKey* newKey) {
    OPM_ASSERT_AT(oldKeyIndex < keysNum, "MenuCtrl", 47);
    OPM_ASSERT_AT(newKey, "MenuCtrl", 48);
    OPM_ASSERT(KeyInStorage(newKey) && "Key should be owned by this instance of CMenuCtrl");
    PutIntoSlot(oldKeyIndex, newKey);
    Layout();
}

void CMenuCtrl::ReplaceKey(CMenuKey* oldKey, CMenuKey* newKey) {
    OPM_ASSERT_AT(KeyInCurrents(oldKey) && "Old key should be in current keys list", "MenuCtrl",
                  59);
    unsigned oldKeyIndex = 0;
    while (oldKeyIndex < keysNum && currentKeys[oldKeyIndex] != oldKey) ++oldKeyIndex;
    OPM_ASSERT_AT(oldKeyIndex < GetCurrKeysNum(), "MenuCtrl", 64);
    ReplaceKey(oldKeyIndex, newKey);
}

void CMenuCtrl::PressKey(unsigned keyIndex) {
    OPM_ASSERT_AT(keyIndex < lenof(currentKeys), "MenuCtrl", 122);
    OPM_ASSERT_AT(currentKeys[keyIndex], "MenuCtrl", 123);
    Notify(currentKeys[keyIndex]);
}

void CMenuCtrl::OnKeyCommand(UINT keyId) {
    OPM_ASSERT((keyId >= baseKeyId) && (keyId < baseKeyId + keysStorage.size()));
    CMenuKey* key = keysStorage[keyId - baseKeyId].get();
    OPM_ASSERT(key);
    Notify(key);
}

UINT CMenuCtrl::SlotOverlayId(unsigned keyIndex) {
    OPM_ASSERT_AT(keyIndex < keysNum, "MenuCtrl", 229);
    return kFirstSlotOverlay + keyIndex;
}

void CMenuCtrl::Layout() {
    OPM_ASSERT_AT(currentKeys[0], "MenuCtrl", 262);
    const QRect client = rect();
    const QSize keySize = currentKeys[0]->size();
    const int columnWidth = client.width() / static_cast<int>(keysNum);
    int x = client.left() + (columnWidth - keySize.width()) / 2;
    const int y = client.top() + (client.height() - keySize.height()) / 2;
    for (CMenuKey* key : currentKeys) {
        key->move(x, y);
        key->show();
        x += columnWidth;
    }
}

void CMenuCtrl::Notify(CMenuKey* key) {
    if (!key->isEnabled()) return;
    QWidget* p_parent = parentWidget();
    OPM_ASSERT(p_parent && "CMenuCtrl can be used without parent set");
    HWND hWnd = WindowHandleOf(p_parent);
    OPM_ASSERT(hWnd && "We have parent but it not attached to window ?");
    NMHDR header{hWnd, controlId, key->GetCommandId()};
    CNotifyEvent notification(controlId, &header);
    QCoreApplication::sendEvent(p_parent, &notification);
    emit KeyNotified(controlId, key->GetCommandId());
}

void CMenuCtrl::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (currentKeys[0] != nullptr) Layout();
}

bool CMenuCtrl::KeyInStorage(const CMenuKey* key) const {
    for (const auto& owned : keysStorage) {
        if (owned.get() == key) return true;
    }
    return false;
}

bool CMenuCtrl::KeyInCurrents(const CMenuKey* key) const {
    for (const CMenuKey* current : currentKeys) {
        if (current == key) return true;
    }
    return false;
}

CMenuKey* CMenuCtrl::GetCurrentKey(unsigned keyIndex) const {
    return keyIndex < keysNum ? currentKeys[keyIndex] : nullptr;
}
