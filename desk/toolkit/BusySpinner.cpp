#include "desk/toolkit/BusySpinner.h"

#include <QPainter>

#include "desk/core/edges/Services.h"
#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

constexpr int kCornerSide = 16;
constexpr int kCentreSide = 28;
constexpr int kCornerMargin = 8;
constexpr int kSteps = 24;
constexpr std::chrono::milliseconds kStepTime(40);

}  // namespace

BusySpinner::BusySpinner(QAbstractScrollArea& view) : QWidget(&view), mView(view) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setObjectName(QStringLiteral("BusySpinner"));
    hide();
}

BusySpinner::~BusySpinner() {
    Stop();
}

void BusySpinner::Start(int alignment) {
    mAlignment = alignment;
    Place();
    show();
    raise();
    if (mTimer != 0) return;
    mTimer = GetServices().mMainThread->StartTimer(kStepTime, [this] {
        mStep = (mStep + 1) % kSteps;
        update();
    });
}

void BusySpinner::Stop() {
    hide();
    if (mTimer == 0) return;
    if (MainThread* thread = GetServices().mMainThread) thread->StopTimer(mTimer);
    mTimer = 0;
}

void BusySpinner::Place() {
    const QRect area = mView.viewport()->geometry();
    const int side = mAlignment == 1 ? kCentreSide : kCornerSide;
    QRect place(0, 0, side, side);
    if (mAlignment == 1)
        place.moveCenter(area.center());
    else
        place.moveTopRight({area.right() - kCornerMargin, area.top() + kCornerMargin});
    setGeometry(place);
}

void BusySpinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double thickness = width() / 9.0;
    const QRectF circle = QRectF(rect()).adjusted(thickness, thickness, -thickness, -thickness);
    painter.setPen(QPen(Theme::Color(ThemeColor::Line), thickness));
    painter.drawEllipse(circle);
    painter.setPen(QPen(Theme::Color(ThemeColor::Accent), thickness, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, -mStep * 360 * 16 / kSteps, 100 * 16);
}

}  // namespace desk
