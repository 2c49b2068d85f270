#include "Common/Toolkit/ProcessingDialog.h"

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QTimer>
#include <QtMath>

#include "Common/Toolkit/FontCreator.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

namespace {
constexpr int kStepMs = 100;
constexpr int kTextSlack = 12;
}  // namespace

CProcessingDialog::CProcessingDialog(QWidget* parent, const std::wstring& text)
    : QDialog(parent), text(text), frame(*this, false) {}

CProcessingDialog::~CProcessingDialog() {
    Close();
}

void CProcessingDialog::Create() {
    if (textCtrl == nullptr) Build();
    animation->start(kStepMs);
    show();
    raise();
    // The caller's operation blocks the event loop next: paint now, not later.
    repaint();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void CProcessingDialog::Build() {
    const bool templateLoaded = LoadDialogTemplate(IDD, frame.Client());
    OPM_ASSERT(templateLoaded && "Processing template missing from the language pack");
    textCtrl = qobject_cast<QLabel*>(GetDlgItem(frame.Client(), IDC_TEXT));
    indicator = qobject_cast<QLabel*>(GetDlgItem(frame.Client(), IDC_INDICATOR));
    OPM_ASSERT(textCtrl && indicator);

    QFont font;
    FontCreator::CreateCommonFont(font, 20, 700);
    textCtrl->setFont(font);
    if (!text.empty()) textCtrl->setText(QString::fromStdWString(text));
    // A longer text (or a language with longer words) widens the box.
    const int needed = QFontMetrics(font).horizontalAdvance(textCtrl->text()) + kTextSlack;
    if (needed > textCtrl->width()) {
        const int growth = needed - textCtrl->width();
        textCtrl->resize(needed, textCtrl->height());
        frame.Client()->resize(frame.Client()->width() + growth, frame.Client()->height());
    }

    frame.ResizeClient(frame.Client()->size());
    setGeometry(CPopupFrame::PlaceOver(size(), parentWidget()));
    setModal(false);
    DrawIndicator();

    animation = new QTimer(this);
    connect(animation, &QTimer::timeout, this, &CProcessingDialog::Advance);
}

void CProcessingDialog::Close() {
    if (animation != nullptr) animation->stop();
    if (isVisible()) hide();
}

void CProcessingDialog::Advance() {
    phase = (phase + 1) % kSpokes;
    DrawIndicator();
}

// A ring of spokes with one bright spoke travelling round and a fading tail.
void CProcessingDialog::DrawIndicator() {
    const int side = std::min(indicator->width(), indicator->height());
    if (side <= 0) return;
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(side / 2.0, side / 2.0);
    const qreal outer = side / 2.0 - 2;
    const qreal inner = outer * 0.45;
    for (int spoke = 0; spoke < kSpokes; ++spoke) {
        const int age = (phase - spoke + kSpokes) % kSpokes;
        const int shade = std::min(200, age * 200 / 4);
        QPen pen(QColor(shade, shade, shade));
        pen.setWidthF(side / 10.0);
        pen.setCapStyle(Qt::RoundCap);
        painter.setPen(pen);
        const qreal angle = 2 * M_PI * spoke / kSpokes;
        painter.drawLine(QPointF(inner * qSin(angle), -inner * qCos(angle)),
                         QPointF(outer * qSin(angle), -outer * qCos(angle)));
    }
    painter.end();
    indicator->setPixmap(picture);
}
