#include "PowerMeter/Screens/ResultSummaryBar.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/ToolkitStyle.h"
#include "Common/Utilities/LanguageResources.h"
#include "PowerMeter/Screens/StaticResultCtrl.h"

namespace {
constexpr const char* kMinFormat = "Min: %.3f";
constexpr const char* kMaxFormat = "Max: %.3f";
constexpr const char* kSpreadFormat = "Avr: %.3f";
constexpr int kColumns = 3;
constexpr int kTextLeft = 2;
constexpr int kTextHeight = 20;
constexpr int kSmallestTextHeight = 14;
}  // namespace

CResultSummaryBar::CResultSummaryBar() {
    FontCreator::CreateCommonFont(font, kTextHeight, 700);
}

CResultSummaryBar::Summary CResultSummaryBar::Summarise(const std::vector<OPMResult>& results) {
    Summary summary;
    summary.count = results.size();
    if (results.empty()) return summary;
    summary.minimum = summary.maximum = CStaticResultCtrl::DisplayedValue(results.front());
    float sum = 0.0f;
    for (const OPMResult& result : results) {
        const float value = CStaticResultCtrl::DisplayedValue(result);
        summary.minimum = std::min(summary.minimum, value);
        summary.maximum = std::max(summary.maximum, value);
        sum += value;
    }
    const float share = 1.0f / static_cast<float>(results.size());
    const float mean = sum * share;
    float squares = 0.0f;
    for (const OPMResult& result : results) {
        const float deviation = CStaticResultCtrl::DisplayedValue(result) - mean;
        squares += deviation * deviation;
    }
    summary.spread = std::sqrt(share * squares);
    return summary;
}

std::array<QString, 3> CResultSummaryBar::Texts(const Summary& summary) {
    if (summary.count == 0) return {};
    return {QString::asprintf(kMinFormat, static_cast<double>(summary.minimum)),
            QString::asprintf(kMaxFormat, static_cast<double>(summary.maximum)),
            QString::asprintf(kSpreadFormat, static_cast<double>(summary.spread))};
}

bool CResultSummaryBar::SubclassDlgItem(int id, QWidget* dialog) {
    QWidget* original = GetDlgItem(dialog, id);
    if (original == nullptr || original == this) return original == this;
    setParent(original->parentWidget());
    setObjectName(original->objectName());
    setGeometry(original->geometry());
    stackUnder(original);
    show();
    delete original;
    return true;
}

void CResultSummaryBar::SetResults(const std::vector<OPMResult>& results) {
    texts = Texts(Summarise(results));
    update();
}

void CResultSummaryBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const int columnWidth = width() / kColumns;
    const QColor face = palette().color(QPalette::Button);
    for (int column = 0; column < kColumns; ++column) {
        const QRect box(column * columnWidth, 0, columnWidth, height());
        painter.setPen(QPen(CToolkitStyle::Text(), 2));
        painter.setBrush(face);
        painter.drawRect(QRectF(box).adjusted(1, 1, -1, -1));
        painter.setPen(CToolkitStyle::Text());
        // A long value takes a smaller size rather than run into the next column.
        const QString& text = texts[static_cast<size_t>(column)];
        QFont fitted = font;
        while (fitted.pixelSize() > kSmallestTextHeight &&
               QFontMetrics(fitted).horizontalAdvance(text) > columnWidth - 2 * kTextLeft)
            fitted.setPixelSize(fitted.pixelSize() - 1);
        painter.setFont(fitted);
        painter.drawText(box.adjusted(kTextLeft, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, text);
    }
}
