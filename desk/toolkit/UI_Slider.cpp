#include "host/toolkit/UI_Slider.h"

#include <QMouseEvent>
#include <QPainter>
#include <QSlider>
#include <algorithm>
#include <cmath>

#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

constexpr int kContinuousSteps = 1000;
constexpr int kGrooveThickness = 4;

/// A slider that jumps to where it is clicked and has a thumb of a given size.
class ThumbSlider : public QSlider {
public:
    ThumbSlider(SliderImpl& node, QWidget* parent)
        : QSlider(node.mDirection == host::UI_Direction::Horizontal ? Qt::Horizontal : Qt::Vertical, parent),
          mNode(&node) {
        setFocusPolicy(Qt::StrongFocus);
        connect(this, &QSlider::valueChanged, this, [this](int position) { mNode->Moved(position); });
        connect(this, &QSlider::sliderReleased, this, [this] { mNode->Notify(mNode->mChanged); });
    }

protected:
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton) return event->ignore();
        setSliderDown(true);
        setValue(PositionAt(event->position()));
        update();
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        if (isSliderDown()) setValue(PositionAt(event->position()));
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton && isSliderDown()) setSliderDown(false);
        update();
    }
    void keyPressEvent(QKeyEvent* event) override {
        const int before = value();
        QSlider::keyPressEvent(event);
        if (value() != before) mNode->Notify(mNode->mChanged);
    }
    void wheelEvent(QWheelEvent* event) override {
        const int before = value();
        QSlider::wheelEvent(event);
        if (value() != before) mNode->Notify(mNode->mChanged);
    }
    void paintEvent(QPaintEvent*) override;
    void enterEvent(QEnterEvent*) override { update(); }
    void leaveEvent(QEvent*) override { update(); }

private:
    bool IsHorizontal() const { return orientation() == Qt::Horizontal; }
    double Thumb() const { return double(IsHorizontal() ? mNode->mThumbWidth : mNode->mThumbHeight); }
    double Travel() const { return std::max(1.0, (IsHorizontal() ? width() : height()) - Thumb()); }
    double Fraction() const { return double(value() - minimum()) / std::max(1, maximum() - minimum()); }

    int PositionAt(QPointF point) const {
        const double along = IsHorizontal() ? point.x() : height() - point.y();
        const double fraction = std::clamp((along - Thumb() / 2) / Travel(), 0.0, 1.0);
        return minimum() + int(std::lround(fraction * (maximum() - minimum())));
    }

    SliderImpl* mNode;
};

void ThumbSlider::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double centre = Thumb() / 2 + (IsHorizontal() ? Fraction() : 1 - Fraction()) * Travel();
    const double across = (IsHorizontal() ? height() : width()) / 2.0;
    QRectF groove(0, across - kGrooveThickness / 2.0, width(), kGrooveThickness);
    QRectF thumb(centre - Thumb() / 2, across - double(mNode->mThumbHeight) / 2, Thumb(),
                 double(mNode->mThumbHeight));
    if (!IsHorizontal()) {
        groove = QRectF(across - kGrooveThickness / 2.0, 0, kGrooveThickness, height());
        thumb = QRectF(across - double(mNode->mThumbWidth) / 2, centre - Thumb() / 2,
                       double(mNode->mThumbWidth), Thumb());
    }
    painter.setBrush(Theme::Color(ThemeColor::Line));
    painter.drawRoundedRect(groove, kGrooveThickness / 2.0, kGrooveThickness / 2.0);
    QColor color = Theme::Color(isEnabled() ? ThemeColor::IconStroke : ThemeColor::DisabledText);
    if (isSliderDown() || (isEnabled() && underMouse())) color = Theme::Color(ThemeColor::Text);
    painter.setBrush(color);
    if (hasFocus()) painter.setPen(QPen(Theme::Color(ThemeColor::Accent), 2));
    const double radius = std::min(thumb.width(), thumb.height()) / 2;
    painter.drawRoundedRect(hasFocus() ? thumb.adjusted(1, 1, -1, -1) : thumb, radius, radius);
}

}  // namespace

int SliderImpl::ToPosition(double value) const {
    if (!mIsContinuous) return int(std::lround(value));
    const double span = mMaximum - mMinimum;
    return span > 0 ? int(std::lround((value - mMinimum) / span * kContinuousSteps)) : 0;
}

double SliderImpl::ToValue(int position) const {
    return mIsContinuous ? mMinimum + (mMaximum - mMinimum) * position / kContinuousSteps : position;
}

void SliderImpl::Moved(int position) {
    mValue = std::clamp(ToValue(position), mMinimum, mMaximum);
    Notify(mChangedInteractively);
}

QWidget* SliderImpl::CreateWidget(QWidget& parent) {
    return new ThumbSlider(*this, &parent);
}

void SliderImpl::ApplyToWidget() {
    ControlImpl::ApplyToWidget();
    auto* slider = static_cast<QSlider*>(mWidget.data());
    const QSignalBlocker silent(slider);
    slider->setEnabled(mIsEnabled);
    slider->setRange(mIsContinuous ? 0 : ToPosition(mMinimum),
                     mIsContinuous ? kContinuousSteps : ToPosition(mMaximum));
    slider->setSingleStep(mIsContinuous ? kContinuousSteps / 20 : 1);
    slider->setPageStep(mIsContinuous ? kContinuousSteps / 4 : 1);
    slider->setValue(ToPosition(mValue));
    slider->update();
}

}  // namespace desk

namespace host {

namespace {

desk::SliderImpl& ImplOf(const UI_Slider& slider) {
    return static_cast<desk::SliderImpl&>(slider.GetImpl());
}

void Apply(const UI_Slider& slider) {
    if (ImplOf(slider).mWidget) ImplOf(slider).ApplyToWidget();
}

}  // namespace

UI_Slider::UI_Slider(UI_Direction direction, bool isContinuous)
    : UI_InteractiveControlView(std::make_unique<desk::SliderImpl>()) {
    ImplOf(*this).mDirection = direction;
    ImplOf(*this).mIsContinuous = isContinuous;
}
UI_Slider::~UI_Slider() = default;

void UI_Slider::SetRange(double minimum, double maximum) {
    ImplOf(*this).mMinimum = minimum;
    ImplOf(*this).mMaximum = std::max(minimum, maximum);
    SetValue(ImplOf(*this).mValue);
}

void UI_Slider::SetValue(double value) {
    desk::SliderImpl& impl = ImplOf(*this);
    impl.mValue = std::clamp(value, impl.mMinimum, impl.mMaximum);
    Apply(*this);
}

double UI_Slider::GetValue() const {
    return ImplOf(*this).mValue;
}

void UI_Slider::SetThumbSize(float width, float height) {
    ImplOf(*this).mThumbWidth = width;
    ImplOf(*this).mThumbHeight = height;
    Apply(*this);
}

void UI_Slider::Enable(bool enable) {
    ImplOf(*this).mIsEnabled = enable;
    Apply(*this);
}

}  // namespace host
