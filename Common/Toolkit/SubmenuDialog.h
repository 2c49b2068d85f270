#pragma once
// The pop-up column of text keys a soft key opens (wavelengths, reference
// actions, lasers). It opens above its anchor key, runs its own modal loop
// and ends with IDOK and the chosen key's command id, or with IDCANCEL (2)
// when the user taps outside it, presses Escape or presses the function key
// that opened it again. A column longer than the screen scrolls so that the
// current key stays visible.

#include <QFont>
#include <QPointer>
#include <memory>
#include <utility>
#include <vector>

#include "Common/Toolkit/KeyboardControlledDialog.h"

class CMenuKey;
class CScrollMarks;
class CTextMenuKey;
class QEventLoop;

class CSubmenuDialog : public CKeyboardControlledDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 372;
    static constexpr int kKeyHeight = 48;

    using KeyEntry = std::pair<UINT, std::unique_ptr<CTextMenuKey>>;

    // `openingKey` is the function key (VK_F1..VK_F4) that opened the column.
    CSubmenuDialog(CMenuKey* anchorKey, UINT openingKey, QWidget* owner);
    ~CSubmenuDialog() override;

    // Appends a key whose window does not exist yet.
    void AddKey(KeyEntry entry);
    // Appends a text key drawn in the column's own font.
    void AddKey(UINT commandId, const QString& caption);
    const QFont& KeyFont() const { return font; }

    // The key that has the focus when the column opens.
    void SetCurrentKey(size_t index) { currKey = index; }
    size_t GetCurrentKey() const { return currKey; }

    // Runs the column; IDOK when a key was chosen, 2 otherwise.
    int Show();
    // The chosen key's command id (after Show returned IDOK).
    UINT GetSelectedId() const { return selectedId; }

    size_t GetKeysCount() const { return keysList.size(); }
    CTextMenuKey* GetKey(size_t index) const;
    size_t VisibleKeysNum() const { return visibleKeysNum; }
    size_t FirstVisibleKey() const { return firstVisibleKey; }
    const CScrollMarks* ScrollMarks() const { return scrollMarks; }

protected:
    bool OnInitDialog() override;
    bool OnArrowPressed(int direction) override;
    bool OnEnterPressed() override;
    bool OnSpacePressed() override;
    bool OnEscapePressed() override;
    bool OnTabPressed() override { return true; }
    bool OnF1Pressed() override;
    bool OnF2Pressed() override;
    bool OnF3Pressed() override;
    bool OnF4Pressed() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool OnFunctionKey(UINT virtualKey);
    void Place();
    void MoveTo(size_t index);
    void ScrollTo(size_t index);
    void Select(size_t index);
    void SetResult(int value);
    QRect ScreenRect() const;

    QPointer<CMenuKey> anchorKey;
    UINT openingKey;
    QFont font;
    std::vector<KeyEntry> keysList;
    size_t currKey = 0;
    size_t visibleKeysNum = 0;
    size_t firstVisibleKey = 0;
    CScrollMarks* scrollMarks = nullptr;
    int result = 0;
    UINT selectedId = 0;
    bool running = false;
    QEventLoop* loop = nullptr;
};
