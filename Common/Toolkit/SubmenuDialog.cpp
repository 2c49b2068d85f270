#include "Common/Toolkit/SubmenuDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QMouseEvent>
#include <algorithm>

#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/ScrollMarks.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Toolkit/ToolkitStyle.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Platform/FatalError.h"

CSubmenuDialog::CSubmenuDialog(CMenuKey* anchorKey, UINT openingKey, QWidget* owner)
    : CKeyboardControlledDialog(IDD, owner), anchorKey(anchorKey), openingKey(openingKey) {
    OPM_ASSERT(anchorKey && "A submenu opens over its soft key");
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("CSubmenuDialog { background: #000000; }"));
    FontCreator::CreateCommonFont(font, 16, 700);
}

CSubmenuDialog::~CSubmenuDialog() {
    // The keys are owned by the list, not by their parent window.
    keysList.clear();
}

void CSubmenuDialog::AddKey(KeyEntry entry) {
    auto& menuKey = entry.second;
    OPM_ASSERT(menuKey.get());
    OPM_ASSERT((menuKey->GetSafeHwnd() == NULL) && "Key shouldn't be created");
    keysList.push_back(std::move(entry));
}

void CSubmenuDialog::AddKey(UINT commandId, const QString& caption) {
    AddKey({commandId, std::make_unique<CTextMenuKey>(commandId, caption, &font)});
}

CTextMenuKey* CSubmenuDialog::GetKey(size_t index) const {
    return index < keysList.size() ? keysList[index].second.get() : nullptr;
}

bool CSubmenuDialog::OnInitDialog() {
    const bool initResult = CKeyboardControlledDialog::OnInitDialog();
    OPM_ASSERT(currKey < keysList.size());
    for (size_t i = 0; i < keysList.size(); ++i) {
        CTextMenuKey* key = keysList[i].second.get();
        key->Create(this, static_cast<UINT>(i + 1));
        key->setFocusPolicy(Qt::StrongFocus);
        connect(key, &CMenuKey::clicked, this, [this, i] { Select(i); });
    }
    scrollMarks = new CScrollMarks(this);
    Place();
    return initResult;
}

QRect CSubmenuDialog::ScreenRect() const {
    // The instrument's screen is the screen dialog's whole window.
    const QWidget* screen = anchorKey ? anchorKey->window() : parentWidget();
    if (screen == nullptr) return QRect(QPoint(0, 0), CToolkitStyle::kScreenSize);
    return QRect(screen->mapToGlobal(QPoint(0, 0)), screen->size());
}

void CSubmenuDialog::Place() {
    const QRect screen = ScreenRect();
    visibleKeysNum = std::min(keysList.size(), static_cast<size_t>(screen.height() / kKeyHeight));
    OPM_ASSERT_AT(visibleKeysNum > 0, "SubmenuDialog", 174);

    const QRect anchor(anchorKey->mapToGlobal(QPoint(0, 0)), anchorKey->size());
    int width = anchor.width();
    for (const auto& entry : keysList) width = std::max(width, entry.second->NeededWidth());
    width = std::min(width, screen.width());
    const int height = static_cast<int>(visibleKeysNum) * kKeyHeight;

    // Above the anchor key, left edges aligned, kept on the screen.
    const int x = std::clamp(anchor.left(), screen.left(), screen.right() + 1 - width);
    const int y = std::max(screen.top(), anchor.top() - height);
    setFixedSize(width, height);
    move(x, y);
    for (const auto& entry : keysList) entry.second->resize(width, kKeyHeight);
    scrollMarks->setGeometry(0, 0, width, height);
    ScrollTo(currKey);
}

void CSubmenuDialog::ScrollTo(size_t index) {
    OPM_ASSERT_AT(visibleKeysNum, "SubmenuDialog", 216);
    if (index < firstVisibleKey) firstVisibleKey = index;
    if (index >= firstVisibleKey + visibleKeysNum) firstVisibleKey = index + 1 - visibleKeysNum;
    for (size_t i = 0; i < keysList.size(); ++i) {
        CTextMenuKey* key = keysList[i].second.get();
        const bool visible = i >= firstVisibleKey && i < firstVisibleKey + visibleKeysNum;
        if (visible) key->move(0, static_cast<int>(i - firstVisibleKey) * kKeyHeight);
        key->setVisible(visible);
    }
    scrollMarks->SetMarks(firstVisibleKey > 0, firstVisibleKey + visibleKeysNum < keysList.size());
    scrollMarks->raise();
}

void CSubmenuDialog::MoveTo(size_t index) {
    currKey = index;
    ScrollTo(index);
    keysList[index].second->setFocus(Qt::OtherFocusReason);
}

int CSubmenuDialog::Show() {
    result = 0;
    QPointer<QWidget> savedFocus = QApplication::focusWidget();
    if (!Create()) return IDCANCEL;
    // The first visible key starts from the current one, so that it shows at
    // the bottom of a column longer than the screen.
    firstVisibleKey = currKey >= visibleKeysNum ? currKey - (visibleKeysNum - 1) : 0;
    show();
    raise();
    activateWindow();
    MoveTo(currKey);

    QEventLoop modalLoop;
    loop = &modalLoop;
    running = true;
    if (result == 0) modalLoop.exec();
    running = false;
    loop = nullptr;

    hide();
    if (savedFocus) {
        savedFocus->window()->activateWindow();
        savedFocus->setFocus(Qt::OtherFocusReason);
    }
    return result;
}

void CSubmenuDialog::SetResult(int value) {
    if (result != 0) return;
    result = value;
    if (loop != nullptr) loop->quit();
}

void CSubmenuDialog::Select(size_t index) {
    if (!running || index >= keysList.size()) return;
    if (!keysList[index].second->isEnabled()) return;
    currKey = index;
    selectedId = keysList[index].first;
    SetResult(IDOK);
}

bool CSubmenuDialog::OnArrowPressed(int direction) {
    if (keysList.empty()) return true;
    const size_t count = keysList.size();
    if (direction == kArrowUp) MoveTo((currKey + count - 1) % count);
    if (direction == kArrowDown) MoveTo((currKey + 1) % count);
    return true;
}

bool CSubmenuDialog::OnEnterPressed() {
    Select(currKey);
    return true;
}

bool CSubmenuDialog::OnSpacePressed() {
    return OnEnterPressed();
}

bool CSubmenuDialog::OnEscapePressed() {
    SetResult(IDCANCEL);
    return true;
}

bool CSubmenuDialog::OnFunctionKey(UINT virtualKey) {
    // The key that opened the column closes it; the others do nothing here.
    if (virtualKey == openingKey) SetResult(IDCANCEL);
    return true;
}

bool CSubmenuDialog::OnF1Pressed() {
    return OnFunctionKey(VK_F1);
}
bool CSubmenuDialog::OnF2Pressed() {
    return OnFunctionKey(VK_F2);
}
bool CSubmenuDialog::OnF3Pressed() {
    return OnFunctionKey(VK_F3);
}
bool CSubmenuDialog::OnF4Pressed() {
    return OnFunctionKey(VK_F4);
}

bool CSubmenuDialog::eventFilter(QObject* watched, QEvent* event) {
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!running || widget == nullptr || widget->window() == this)
        return CKeyboardControlledDialog::eventFilter(watched, event);
    switch (event->type()) {
        case QEvent::MouseButtonPress:
            // A tap outside closes the column and goes no further.
            SetResult(IDCANCEL);
            return true;
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            // The column's loop owns the keys, whichever window has the focus.
            PreTranslateMessage(event);
            return true;
        default:
            return CKeyboardControlledDialog::eventFilter(watched, event);
    }
}
