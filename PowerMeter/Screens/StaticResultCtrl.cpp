#include "PowerMeter/Screens/StaticResultCtrl.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/ToolkitStyle.h"

namespace {
constexpr const char* kDateFormat = "%d-%d-%d";
constexpr const char* kTimeFormat = " %02d:%02d";
constexpr const char* kValuesFormat = " %d nm %.3f dBm %.3f dBm";
// A reference level this close to zero means the reference display was off.
constexpr double kNoReference = 0.0001;

constexpr int kFrame = 2;
constexpr int kRowPadding = 3;
constexpr int kTextIndent = 8;
constexpr int kTextHeight = 20;
constexpr int kEmptyTextHeight = 26;
}  // namespace

CStaticResultCtrl::CStaticResultCtrl() {
    FontCreator::CreateCommonFont(textFont, kTextHeight, 400);
    FontCreator::CreateCommonFont(valueFont, kTextHeight, 700);
    FontCreator::CreateCommonFont(emptyFont, kEmptyTextHeight, 700);
    setFocusPolicy(Qt::NoFocus);
}

float CStaticResultCtrl::DisplayedValue(const OPMResult& result) {
    return std::fabs(result.refLevel) < kNoReference ? result.absPower
                                                     : result.absPower - result.refLevel;
}

std::array<QString, 3> CStaticResultCtrl::RowTexts(const OPMResult& result) {
    return {QString::asprintf(kDateFormat, result.year, result.month, result.day) +
                QString::asprintf(kTimeFormat, result.hour, result.minute),
            QString::asprintf(kValuesFormat, result.waveLength,
                              static_cast<double>(DisplayedValue(result)),
                              static_cast<double>(result.refLevel)),
            QString::fromStdWString(result.description)};
}

void CStaticResultCtrl::SetResults(const std::vector<OPMResult>* shown, const QString& emptyText) {
    results = shown;
    setText(Count() == 0 ? emptyText : QString());
    const int keep = selected;
    selected = -1;
    SetSelected(keep);
    SetFirstVisible(firstVisible);
    UpdateScrollBar();
    update();
}

void CStaticResultCtrl::SetScrollBar(QScrollBar* bar) {
    scrollBar = bar;
    connect(bar, &QScrollBar::valueChanged, this, &CStaticResultCtrl::SetFirstVisible);
    UpdateScrollBar();
}

int CStaticResultCtrl::Count() const {
    return results != nullptr ? static_cast<int>(results->size()) : 0;
}

int CStaticResultCtrl::MinimumRowHeight() const {
    const int line = std::max(QFontMetrics(textFont).height(), QFontMetrics(valueFont).height());
    return 3 * line + 2 * kRowPadding;
}

int CStaticResultCtrl::RowsFit() const {
    return std::max(1, (height() - 2 * kFrame) / MinimumRowHeight());
}

// The rows that fit share the whole height, so no strip is left empty below.
int CStaticResultCtrl::RowHeight() const {
    return std::max(MinimumRowHeight(), (height() - 2 * kFrame) / RowsFit());
}

int CStaticResultCtrl::RowAt(int y) const {
    if (y < kFrame) return -1;
    const int row = firstVisible + (y - kFrame) / RowHeight();
    return row < Count() ? row : -1;
}

void CStaticResultCtrl::SetSelected(int row) {
    const int count = Count();
    row = count == 0 ? 0 : std::clamp(row, 0, count - 1);
    if (row < firstVisible)
        SetFirstVisible(row);
    else if (row >= firstVisible + RowsFit())
        SetFirstVisible(row - RowsFit() + 1);
    if (row == selected) return;
    selected = row;
    update();
    emit SelectionChanged(row);
}

void CStaticResultCtrl::SetFirstVisible(int row) {
    row = std::clamp(row, 0, std::max(0, Count() - RowsFit()));
    if (row != firstVisible) {
        firstVisible = row;
        update();
    }
    UpdateScrollBar();
}

void CStaticResultCtrl::UpdateScrollBar() {
    if (scrollBar == nullptr) return;
    const int hiddenRows = Count() - RowsFit();
    if (hiddenRows <= 0) {
        scrollBar->hide();
        return;
    }
    // The bar reports back through valueChanged only when the user moves it.
    const QSignalBlocker quiet(scrollBar);
    scrollBar->setRange(0, hiddenRows);
    scrollBar->setPageStep(RowsFit());
    scrollBar->setValue(firstVisible);
    scrollBar->show();
}

void CStaticResultCtrl::resizeEvent(QResizeEvent* event) {
    CColorStatic::resizeEvent(event);
    SetFirstVisible(firstVisible);
}

void CStaticResultCtrl::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(rect(), CToolkitStyle::Background());
    const QRect area = rect().adjusted(kFrame, kFrame, -kFrame, -kFrame);
    rowsPainted = 0;
    if (Count() == 0) {
        painter.setFont(emptyFont);
        painter.setPen(CToolkitStyle::Text());
        painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, text());
    } else {
        // Only the rows the repainted part crosses; the list's length never
        // enters the cost.
        const int rowHeight = RowHeight();
        const QRect dirty = event->rect() & area;
        const int top = firstVisible + std::max(0, dirty.top() - area.top()) / rowHeight;
        const int bottom =
            std::min({Count() - 1, firstVisible + RowsFit() - 1,
                      firstVisible + std::max(0, dirty.bottom() - area.top()) / rowHeight});
        const QColor face = palette().color(QPalette::Button);
        const int lineHeight = (rowHeight - 2 * kRowPadding) / 3;
        painter.setClipRect(area);
        for (int row = top; row <= bottom; ++row) {
            const QRect box(area.left(), area.top() + (row - firstVisible) * rowHeight,
                            area.width(), rowHeight);
            const bool isSelected = row == selected;
            painter.fillRect(box, isSelected ? CToolkitStyle::FocusMark() : face);
            painter.setPen(QPen(QColor(0x40, 0x40, 0x40), 2));
            painter.drawLine(box.bottomLeft(), box.bottomRight());
            if (isSelected) {
                painter.setPen(QPen(CToolkitStyle::Text(), 3));
                painter.drawRect(box.adjusted(1, 1, -2, -2));
            }
            painter.setPen(CToolkitStyle::Text());
            const std::array<QString, 3> lines = RowTexts((*results)[static_cast<size_t>(row)]);
            for (int line = 0; line < 3; ++line) {
                const QFont& font = line == 1 ? valueFont : textFont;
                painter.setFont(font);
                const QRect lineBox(box.left() + kTextIndent,
                                    box.top() + kRowPadding + line * lineHeight,
                                    box.width() - 2 * kTextIndent, lineHeight);
                painter.drawText(lineBox, Qt::AlignLeft | Qt::AlignVCenter,
                                 QFontMetrics(font).elidedText(lines[static_cast<size_t>(line)],
                                                               Qt::ElideRight, lineBox.width()));
            }
            ++rowsPainted;
        }
        painter.setClipping(false);
    }
    painter.setPen(QPen(CToolkitStyle::Text(), kFrame));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
}

void CStaticResultCtrl::mousePressEvent(QMouseEvent* event) {
    pressedRow = RowAt(event->position().toPoint().y());
    pressedOnSelected = pressedRow >= 0 && pressedRow == selected;
    if (pressedRow >= 0) SetSelected(pressedRow);
    event->accept();
}

// A second touch on the selected row opens it, once the finger is lifted, so
// that what opens does not take the release as a touch of its own.
void CStaticResultCtrl::mouseReleaseEvent(QMouseEvent* event) {
    const int row = RowAt(event->position().toPoint().y());
    if (pressedOnSelected && row == pressedRow) emit RowActivated(row);
    pressedRow = -1;
    pressedOnSelected = false;
    event->accept();
}
