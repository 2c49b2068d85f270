#include "Common/Toolkit/MessageLayout.h"

#include <QDialog>
#include <QFontMetrics>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

#include "Common/Toolkit/PopupFrame.h"
#include "Common/Utilities/WordWrap.h"

namespace {
constexpr int kKeySpacing = 24;
constexpr int kKeyPadding = 40;  // room beside the label inside a key
constexpr int kMinKeyHeight = 44;

// A key wide enough for its longest label: a running countdown must not clip.
int KeyWidth(const QPushButton& key) {
    const QFontMetrics metrics(key.font());
    const int labelWidth = std::max(metrics.horizontalAdvance(key.text()),
                                    metrics.horizontalAdvance(QStringLiteral("OK(88)")));
    return std::max(key.width(), labelWidth + kKeyPadding);
}
}  // namespace

void CMessageLayout::Arrange(CPopupFrame& frame, QLabel& text, QPushButton& key,
                             const QWidget* parent) {
    QPushButton* keys[] = {&key};
    ArrangeRow(frame, text, keys, 1, parent);
}

void CMessageLayout::Arrange(CPopupFrame& frame, QLabel& text, QPushButton& left,
                             QPushButton& right, const QWidget* parent) {
    QPushButton* keys[] = {&left, &right};
    ArrangeRow(frame, text, keys, 2, parent);
}

void CMessageLayout::ArrangeRow(CPopupFrame& frame, QLabel& text, QPushButton* const* keys,
                                int count, const QWidget* parent) {
    const int maxLineWidth = CPopupFrame::WindowRect(parent).width() * 2 / 3;
    const QFontMetrics metrics(text.font());
    const QStringList lines = CWordWrap::Wrap(text.text(), metrics, maxLineWidth);
    const QSize extent = CWordWrap::Extent(lines, metrics);
    const QSize textSize(extent.width() + kTextSlack, extent.height());
    text.setWordWrap(false);
    text.setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    text.setText(lines.join(QLatin1Char('\n')));

    int keyHeight = kMinKeyHeight;
    int rowWidth = 0;
    for (int i = 0; i < count; ++i) {
        keyHeight = std::max(keyHeight, keys[i]->height());
        rowWidth += KeyWidth(*keys[i]) + (i > 0 ? kKeySpacing : 0);
    }

    // Text plus key row, inflated by the margin on every side; never narrower
    // than the keys or the caption need.
    const int clientWidth =
        std::max({textSize.width(), rowWidth, frame.CaptionTextWidth()}) + 2 * kMargin;
    const int clientHeight = textSize.height() + keyHeight + 2 * kMargin;
    frame.ResizeClient(QSize(clientWidth, clientHeight));

    text.setGeometry((clientWidth - textSize.width()) / 2, kTextTop, textSize.width(),
                     textSize.height());
    const int keyTop = kTextTop + textSize.height() + kKeyGap;
    int x = (clientWidth - rowWidth) / 2;
    for (int i = 0; i < count; ++i) {
        const int width = KeyWidth(*keys[i]);
        keys[i]->setGeometry(x, keyTop, width, keyHeight);
        x += width + kKeySpacing;
    }

    QWidget* box = frame.Client()->window();
    box->setGeometry(CPopupFrame::PlaceOver(box->size(), parent));
}
