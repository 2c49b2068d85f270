#include <QWidget>

#include "Common/Toolkit/BrevoLayouter.h"
#include "Common/ToolkitTestSupport.h"

namespace {

struct Placement {
    const char* name;
    unsigned anchors;
    int height;
    QRect expected;  // for a dialog grown from 640x480 to 800x600
};

}  // namespace

TEST(BrevoLayouter, ControlsFollowTheEdgesTheyAreAnchoredTo) {
    const unsigned L = LayoutOptions::kLeft, T = LayoutOptions::kTop, R = LayoutOptions::kRight,
                   B = LayoutOptions::kBottom;
    const QRect start(100, 200, 50, 40);
    const Placement placements[] = {
        {"top left", L | T, 0, QRect(100, 200, 50, 40)},
        {"bottom right", R | B, 0, QRect(260, 320, 50, 40)},
        {"stretched across", L | R | T, 0, QRect(100, 200, 210, 40)},
        {"stretched down", L | T | B, 0, QRect(100, 200, 50, 160)},
        {"centred", 0, 0, QRect(180, 260, 50, 40)},
        {"bottom with own height", L | R | B, 30, QRect(100, 330, 210, 30)},
        {"top with own height", L | T, 30, QRect(100, 200, 50, 30)},
    };
    for (const Placement& p : placements) {
        QWidget dialog;
        dialog.resize(640, 480);
        dialog.show();
        auto* control = new QWidget(&dialog);
        control->setGeometry(start);
        BrevoLayouter layouter;
        layouter.Bind(&dialog);
        layouter.AddControl(*control, LayoutOptions{p.anchors, p.height});
        dialog.resize(800, 600);
        EXPECT_TRUE(WaitUntil([&] { return control->geometry() == p.expected; })) << p.name;
        EXPECT_EQ(control->geometry(), p.expected) << p.name;
    }
}

TEST(BrevoLayouter, ControlsDeletedMeanwhileAreSkipped) {
    QWidget dialog;
    dialog.resize(640, 480);
    dialog.show();
    auto* gone = new QWidget(&dialog);
    auto* kept = new QWidget(&dialog);
    kept->setGeometry(10, 400, 20, 20);
    BrevoLayouter layouter;
    layouter.Bind(&dialog);
    layouter.AddControl(*gone, {});
    layouter.AddControl(*kept, {LayoutOptions::kLeft | LayoutOptions::kBottom, 0});
    delete gone;
    dialog.resize(700, 500);
    EXPECT_TRUE(WaitUntil([&] { return kept->geometry() == QRect(10, 420, 20, 20); }));
}

TEST(BrevoLayouterDeathTest, UseBeforeBindingIsFatal) {
    EXPECT_FATAL(
        {
            QWidget control;
            BrevoLayouter layouter;
            layouter.AddControl(control, {});
        },
        "inited", "BrevoLayouter");
}

TEST(BrevoLayouterDeathTest, ControlOutsideTheDialogIsRefused) {
    EXPECT_FATAL(
        {
            QWidget dialog;
            QWidget stranger;
            BrevoLayouter layouter;
            layouter.Bind(&dialog);
            layouter.AddControl(stranger, {});
        },
        "layoutHelper.AddControl( &control, options )", "BrevoLayouter");
}

TEST(BrevoLayouterDeathTest, BindsOnlyOnce) {
    EXPECT_FATAL(
        {
            QWidget dialog;
            BrevoLayouter layouter;
            layouter.Bind(&dialog);
            layouter.Bind(&dialog);
        },
        "!inited && \"Layouter is bound already\"", "BrevoLayouter");
}
