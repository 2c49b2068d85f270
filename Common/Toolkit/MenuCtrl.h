#pragma once
// The row of four soft keys at the bottom of every screen, pressed with F1 to
// F4 or by touch. It owns every key ever added to it; four of them are shown,
// one per slot, each with its slot's F-key overlay. A press reaches the
// parent dialog as a notification carrying the menu's id and the key's
// command id.

#include <QWidget>
#include <array>
#include <memory>
#include <vector>

#include "Platform/WinTypes.h"

class CMenuKey;

class CMenuCtrl : public QWidget {
    Q_OBJECT
public:
    static constexpr unsigned keysNum = 4;
    static constexpr UINT baseKeyId = 1;
    static constexpr UINT kBlankKeyBitmap = 478;
    static constexpr UINT kFirstSlotOverlay = 572;

    CMenuCtrl();
    ~CMenuCtrl() override;

    // Takes the place of the placeholder control `id` of `parent` (same id,
    // place and stacking) and attaches to it.
    void SubclassDlgItem(UINT id, QWidget* parent);
    UINT GetDlgCtrlID() const { return controlId; }

    // Takes ownership and creates the key's (hidden) window.
    CMenuKey* AddKey(std::unique_ptr<CMenuKey> key);
    // Up to four keys for slots 0..3; an empty entry leaves its slot alone.
    void SetCurrentKeys(const std::vector<CMenuKey*>& keys);
    void ReplaceKey(unsigned oldKeyIndex, CMenuKey* newKey);
    void ReplaceKey(CMenuKey* oldKey, CMenuKey* newKey);
    // F1..F4: notifies for the key in slot 0..3.
    void PressKey(unsigned keyIndex);

    CMenuKey* GetCurrentKey(unsigned keyIndex) const;
    unsigned GetCurrKeysNum() const { return keysNum; }
    size_t GetKeysCount() const { return keysStorage.size(); }
    static UINT SlotOverlayId(unsigned keyIndex);

signals:
    // Emitted after the parent has handled the notification.
    void KeyNotified(UINT menuCtrlId, UINT commandId);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    // The attach step: four blank keys, no caption, no sunken edge, laid out.
    void PreSubclassWindow();
    void Layout();
    void OnKeyCommand(UINT keyId);
    void Notify(CMenuKey* key);
    void PutIntoSlot(unsigned slot, CMenuKey* key);
    bool KeyInStorage(const CMenuKey* key) const;
    bool KeyInCurrents(const CMenuKey* key) const;

    std::vector<std::unique_ptr<CMenuKey>> keysStorage;
    std::array<CMenuKey*, keysNum> currentKeys{};
    UINT nextKeyId = baseKeyId;
    UINT controlId = 0;
};
