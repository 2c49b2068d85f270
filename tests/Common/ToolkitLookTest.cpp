// What a user sees: the measuring screen's template with the toolkit's soft
// keys, battery bar and submenus, in both languages. Checks that every text
// fits its control at the fonts the screen uses, and writes pictures for
// review when OPM_SCREENSHOTS is set.

#include <QFontMetrics>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "support/LanguagePack.h"
#include "support/Screenshot.h"

namespace {

struct Shown {
    int id;
    QString text;
    int height;  // font height the screen asks for
    int weight;
    bool common;  // common font rather than "Tahoma"
};

// The measuring screen's controls with typical contents and its fonts.
class LookScreen : public CBaseDialog {
public:
    LookScreen() : CBaseDialog(394) {}
    std::vector<CMenuKey*> keys;
    std::vector<QFont> fonts;

    void Show(const std::vector<Shown>& shown) {
        fonts.reserve(shown.size());
        for (const Shown& s : shown) {
            fonts.emplace_back();
            if (s.common)
                FontCreator::CreateCommonFont(fonts.back(), s.height, s.weight);
            else
                FontCreator::CreateFont(fonts.back(), s.height, s.weight);
            QWidget* control = GetDlgItem(s.id);
            control->setFont(fonts.back());
            if (!s.text.isNull()) SetDlgItemText(s.id, s.text);
            control->show();
        }
    }

protected:
    std::vector<CMenuKey*> GetMenuKeys() override {
        for (UINT id : {544u, 545u, 525u, 510u}) keys.push_back(CreateMenuKey(id, id));
        return keys;
    }
};

std::vector<Shown> MeasuringContents() {
    return {
        {1004, "1310 nm", 24, 700, false},
        {1020, "-12.345 dBm", 28, 700, false},
        {1023, "58.29 uW", 28, 700, false},
        {1038, ResourceString(51), 16, 700, true},
        {1008, " -3.00 dBm", 24, 700, false},
        {1036, ResourceString(50), 16, 700, true},
        {1022, " -9.35 dB", 28, 700, false},
        {1114, QString(), 16, 700, true},
        {1113, "1550 " + ResourceString(61340), 28, 700, false},
    };
}

class ToolkitLook : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        ASSERT_TRUE(language.Loaded());
        ASSERT_TRUE(screen.Create());
        screen.move(0, 0);
        screen.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&screen));
    }
    QString Name(const char* what) const {
        return QStringLiteral("toolkit-%1-%2").arg(what, GetParam());
    }

    ScopedLanguagePack language{GetParam()};
    LookScreen screen;
};

}  // namespace

TEST_P(ToolkitLook, MeasuringScreenTextsFitTheirControls) {
    screen.Show(MeasuringContents());
    // A pressed and a disabled key, as they look under a finger and without a meter.
    screen.keys[1]->setDown(true);
    screen.keys[3]->setEnabled(false);
    for (const Shown& s : MeasuringContents()) {
        const auto* label = qobject_cast<QLabel*>(screen.GetDlgItem(s.id));
        ASSERT_NE(label, nullptr) << s.id;
        const QFontMetrics metrics(label->font());
        EXPECT_LE(metrics.horizontalAdvance(label->text()), label->contentsRect().width())
            << GetParam() << " control " << s.id << ": \"" << label->text().toStdString() << '"';
        EXPECT_LE(metrics.height(), label->contentsRect().height()) << GetParam() << " " << s.id;
    }
    screenshot::Save(Name("screen"), &screen);
}

TEST_P(ToolkitLook, SubmenuCaptionsFitTheirKeys) {
    CSubmenuDialog column(screen.keys[2], VK_F3, &screen);
    for (UINT id : {61332u, 61331u, 61333u, 61334u}) column.AddKey(id, ResourceString(id));
    QTimer::singleShot(0, &column, [&] {
        const QFontMetrics metrics(column.KeyFont());
        for (size_t i = 0; i < column.GetKeysCount(); ++i) {
            const CMenuKey* key = column.GetKey(i);
            EXPECT_LT(metrics.horizontalAdvance(column.GetKey(i)->Caption()), key->width() - 16)
                << GetParam() << " key " << i;
            EXPECT_LE(column.geometry().right(), screen.geometry().right());
        }
        QTest::keyClick(&column, Qt::Key_Down);
        screenshot::Save(Name("submenu"), &screen, {&column});
        QTest::keyClick(&column, Qt::Key_Escape);
    });
    column.Show();
}

TEST_P(ToolkitLook, LongSubmenuShowsItsScrollMarks) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    for (int i = 0; i < 14; ++i) column.AddKey(UINT(i), QStringLiteral("%1 nm").arg(1250 + 25 * i));
    column.SetCurrentKey(12);
    QTimer::singleShot(0, &column, [&] {
        screenshot::Save(Name("submenu-long"), &screen, {&column});
        QTest::keyClick(&column, Qt::Key_Escape);
    });
    EXPECT_EQ(column.Show(), IDCANCEL);
}

INSTANTIATE_TEST_SUITE_P(Languages, ToolkitLook, ::testing::Values("english", "german"));
