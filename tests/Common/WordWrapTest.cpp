#include <gtest/gtest.h>

#include <QFont>
#include <QFontMetrics>

#include "Common/Utilities/WordWrap.h"

namespace {

// Widths in multiples of the advance of "x" keep the cases independent of the face.
struct WrapCase {
    const char* text;
    int limitInXs;
    QStringList lines;
};

class WordWrapTest : public testing::TestWithParam<WrapCase> {};

TEST_P(WordWrapTest, BreaksAtBlanksWithinTheLimit) {
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPixelSize(20);
    const QFontMetrics metrics(font);
    const int limit = metrics.horizontalAdvance(QString(GetParam().limitInXs, QLatin1Char('x')));
    EXPECT_EQ(CWordWrap::Wrap(QString::fromLatin1(GetParam().text), metrics, limit),
              GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WordWrapTest,
    testing::Values(WrapCase{"short", 20, {"short"}},
                    WrapCase{"aaaa bbbb cccc", 9, {"aaaa bbbb", "cccc"}},
                    WrapCase{"aaaa bbbb cccc", 8, {"aaaa", "bbbb", "cccc"}},
                    // A word longer than the limit stands alone, unbroken.
                    WrapCase{"a verylongwordhere b", 6, {"a", "verylongwordhere", "b"}},
                    // Explicit breaks stay, an empty line too.
                    WrapCase{"P, dBm\n-99.900...99.990.", 40, {"P, dBm", "-99.900...99.990."}},
                    WrapCase{"one\n\ntwo", 40, {"one", "", "two"}}, WrapCase{"", 10, {""}}));

TEST(WordWrapExtentTest, IsTheWidestLineByTheLineCount) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(18);
    const QFontMetrics metrics(font);
    const QStringList lines{QStringLiteral("ab"), QStringLiteral("abcdef"), QStringLiteral("a")};
    const QSize extent = CWordWrap::Extent(lines, metrics);
    EXPECT_EQ(extent.width(), metrics.horizontalAdvance(QStringLiteral("abcdef")));
    EXPECT_EQ(extent.height(), 3 * metrics.lineSpacing());
}

}  // namespace
