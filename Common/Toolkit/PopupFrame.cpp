#include "Common/Toolkit/PopupFrame.h"

#include <QApplication>
#include <QDialog>
#include <QFontMetrics>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStyle>

namespace {
// High contrast for a screen read outdoors: black on white, a dark caption
// strip, and a focus mark that cannot be missed.
constexpr const char* kStyle = R"(
QDialog { background: #ffffff; border: 3px solid #000000; }
QLabel { color: #000000; background: transparent; }
QLabel#caption { background: #0a2f6b; color: #ffffff; padding-left: 10px; font-weight: bold; }
QPushButton { color: #000000; background: #e6e6e6; border: 2px solid #303030;
              border-radius: 4px; padding: 2px 14px; }
QPushButton:focus, QPushButton[marked="true"] { background: #ffcc00; border: 4px solid #000000; }
QPushButton:pressed { background: #303030; color: #ffffff; }
QPushButton:disabled { color: #9a9a9a; border-color: #b0b0b0; }
)";

// Marks a box, so that a box is never taken for the application's window.
constexpr const char* kBoxProperty = "popupBox";

const QWidget* ApplicationWindow(const QWidget* widget) {
    while (widget != nullptr && widget->parentWidget() != nullptr) widget = widget->parentWidget();
    return widget != nullptr && !widget->property(kBoxProperty).toBool() ? widget : nullptr;
}
}  // namespace

CPopupFrame::CPopupFrame(QDialog& box, bool withCaption) : box(box) {
    box.setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    box.setAttribute(Qt::WA_StyledBackground);
    box.setStyleSheet(QString::fromLatin1(kStyle));
    box.setProperty(kBoxProperty, true);
    if (withCaption) {
        caption = new QLabel(&box);
        caption->setObjectName(QStringLiteral("caption"));
        caption->setAlignment(Qt::AlignVCenter | Qt::AlignLeft);
        QFont font = caption->font();
        font.setBold(true);
        font.setPixelSize(kCaptionHeight / 2 + 2);
        caption->setFont(font);
    }
    client = new QWidget(&box);
    client->setObjectName(QStringLiteral("client"));
    ResizeClient(QSize(200, 100));
}

void CPopupFrame::SetCaption(const QString& text) {
    box.setWindowTitle(text);
    if (caption != nullptr) caption->setText(text);
}

void CPopupFrame::SetCaptionColour(const QString& colour) {
    if (caption == nullptr) return;
    caption->setStyleSheet(QStringLiteral("QLabel#caption { background: %1; }").arg(colour));
}

int CPopupFrame::CaptionTextWidth() const {
    if (caption == nullptr) return 0;
    return QFontMetrics(caption->font()).horizontalAdvance(caption->text()) + 2 * 10;
}

QSize CPopupFrame::WindowSizeFor(const QSize& clientSize) const {
    const int top = caption != nullptr ? kCaptionHeight : 0;
    return QSize(clientSize.width() + 2 * kBorder, clientSize.height() + top + 2 * kBorder);
}

void CPopupFrame::ResizeClient(const QSize& clientSize) {
    const int top = kBorder + (caption != nullptr ? kCaptionHeight : 0);
    if (caption != nullptr)
        caption->setGeometry(kBorder, kBorder, clientSize.width(), kCaptionHeight);
    client->setGeometry(kBorder, top, clientSize.width(), clientSize.height());
    box.setFixedSize(WindowSizeFor(clientSize));
}

void CPopupFrame::Mark(QPushButton* key, bool marked) {
    if (key == nullptr || key->property("marked").toBool() == marked) return;
    key->setProperty("marked", marked);
    key->style()->unpolish(key);
    key->style()->polish(key);
    key->update();
}

QRect CPopupFrame::ScreenRect() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->geometry() : QRect(0, 0, 640, 480);
}

QRect CPopupFrame::WindowRect(const QWidget* parent) {
    const QWidget* window = ApplicationWindow(parent);
    if (window == nullptr) window = ApplicationWindow(QApplication::activeWindow());
    for (const QWidget* shown : QApplication::topLevelWidgets())
        if (window == nullptr && shown->isVisible()) window = ApplicationWindow(shown);
    return window != nullptr ? window->frameGeometry() : ScreenRect();
}

QRect CPopupFrame::CentredRect(const QSize& size, const QRect& over, const QRect& area) {
    QRect placed(QPoint(0, 0), size);
    placed.moveCenter(over.center());
    if (!area.contains(placed)) placed.moveCenter(area.center());
    return placed;
}

QRect CPopupFrame::PlaceOver(const QSize& size, const QWidget* parent) {
    const QRect area = WindowRect(parent);
    const QWidget* window = parent != nullptr ? parent->window() : nullptr;
    return CentredRect(size, window != nullptr ? window->frameGeometry() : area, area);
}
