#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "Common/Toolkit/DialogResults.h"
#include "Common/DialogTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/QuestionDialog.h"

namespace {

constexpr const wchar_t* kQuestion = L"DO YOU REALLY WANT TO OPEN FILE?UNSAVED DATA WILL BE LOST!";

struct AnswerCase {
    const char* name;
    std::vector<Qt::Key> keys;
    int answer;
};

class QuestionDialogTest : public testing::TestWithParam<AnswerCase> {
protected:
    dialogtest::LanguagePack pack;
};

TEST_P(QuestionDialogTest, KeysGiveTheAnswer) {
    ASSERT_TRUE(pack.Loaded());
    CQuestionDialog box(kQuestion, nullptr);
    QTimer::singleShot(0, &box, [&] {
        for (Qt::Key key : GetParam().keys)
            QTest::keyClick(box.focusWidget() ? box.focusWidget() : &box, key);
    });
    EXPECT_EQ(box.DoModal(), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, QuestionDialogTest,
    testing::Values(AnswerCase{"EnterOnTheStartKeyIsNo", {Qt::Key_Return}, IDNO},
                    AnswerCase{"LeftThenEnterIsYes", {Qt::Key_Left, Qt::Key_Return}, IDYES},
                    AnswerCase{
                        "LeftRightEnterIsNo", {Qt::Key_Left, Qt::Key_Right, Qt::Key_Enter}, IDNO},
                    AnswerCase{"EscapeIsNo", {Qt::Key_Left, Qt::Key_Escape}, IDNO}),
    [](const testing::TestParamInfo<AnswerCase>& info) { return std::string(info.param.name); });

TEST(QuestionDialogTouchTest, TappingAKeyAnswers) {
    dialogtest::LanguagePack pack;
    ASSERT_TRUE(pack.Loaded());
    for (int id : {IDOK, IDCANCEL}) {
        CQuestionDialog box(kQuestion, nullptr);
        QTimer::singleShot(0, &box,
                           [&] { QTest::mouseClick(GetDlgItem(&box, id), Qt::LeftButton); });
        EXPECT_EQ(box.DoModal(), id == IDOK ? IDYES : IDNO);
    }
}

TEST(QuestionDialogTouchTest, ShowsTheQuestionAndBothKeys) {
    dialogtest::LanguagePack pack;
    ASSERT_TRUE(pack.Loaded());
    CQuestionDialog box(kQuestion, nullptr);
    box.show();
    auto* text = qobject_cast<QLabel*>(GetDlgItem(&box, CQuestionDialog::IDC_TEXT));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text().remove(QLatin1Char('\n')).remove(QLatin1Char(' ')),
              QString::fromStdWString(kQuestion).remove(QLatin1Char(' ')));
    EXPECT_TRUE(GetDlgItem(&box, IDOK)->isVisible());
    EXPECT_TRUE(GetDlgItem(&box, IDCANCEL)->isVisible());
    EXPECT_EQ(box.MarkedKey(), GetDlgItem(&box, IDCANCEL));
    EXPECT_TRUE(GetDlgItem(&box, IDCANCEL)->property("marked").toBool());
    EXPECT_FALSE(GetDlgItem(&box, IDOK)->property("marked").toBool());
    box.close();
}

}  // namespace
