#include "Common/Toolkit/VirtualKeys.h"

#include <Qt>
#include <array>
#include <utility>

namespace {

// Keys named by the screens; the keypad Enter shares VK_RETURN.
constexpr std::array<std::pair<int, UINT>, 19> kNamedKeys{{
    {Qt::Key_Backspace, VK_BACK}, {Qt::Key_Tab, VK_TAB},       {Qt::Key_Return, VK_RETURN},
    {Qt::Key_Enter, VK_RETURN},   {Qt::Key_Escape, VK_ESCAPE}, {Qt::Key_Space, VK_SPACE},
    {Qt::Key_PageUp, VK_PRIOR},   {Qt::Key_PageDown, VK_NEXT}, {Qt::Key_End, VK_END},
    {Qt::Key_Home, VK_HOME},      {Qt::Key_Left, VK_LEFT},     {Qt::Key_Up, VK_UP},
    {Qt::Key_Right, VK_RIGHT},    {Qt::Key_Down, VK_DOWN},     {Qt::Key_Delete, VK_DELETE},
    {Qt::Key_F1, VK_F1},          {Qt::Key_F2, VK_F2},         {Qt::Key_F3, VK_F3},
    {Qt::Key_F4, VK_F4},
}};

}  // namespace

UINT VirtualKeyFromQt(int qtKey) {
    for (const auto& [qt, vk] : kNamedKeys) {
        if (qt == qtKey) return vk;
    }
    if ((qtKey >= Qt::Key_0 && qtKey <= Qt::Key_9) || (qtKey >= Qt::Key_A && qtKey <= Qt::Key_Z))
        return static_cast<UINT>(qtKey);
    return 0;
}

int QtKeyFromVirtualKey(UINT virtualKey) {
    for (const auto& [qt, vk] : kNamedKeys) {
        if (vk == virtualKey) return qt;
    }
    const int key = static_cast<int>(virtualKey);
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z))
        return key;
    return Qt::Key_unknown;
}
