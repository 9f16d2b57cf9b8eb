#include <QStyleOptionToolButton>
#include <QStylePainter>
#include <QToolButton>

#include "desk/core/names/QtStrings.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/ControlViewImpl.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/toolkit/PictureImpl.h"
#include "host/toolkit/Bitmap.h"

namespace desk {
namespace {

/// The side of a button's picture at scale 1, in view units.
constexpr double kPictureSide = 16;

class PictureToolButton : public QToolButton {
public:
    PictureToolButton(const host::Bitmap& bitmap, QWidget* parent) : QToolButton(parent), mBitmap(bitmap) {
        setAutoRaise(true);
    }

    void SetScale(double scale) {
        mScale = scale;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QStylePainter painter(this);
        QStyleOptionToolButton option;
        initStyleOption(&option);
        painter.drawComplexControl(QStyle::CC_ToolButton, option);
        if (!mBitmap.IsValid()) return;
        const double side = kPictureSide * mScale;
        const QRectF place((width() - side) / 2, (height() - side) / 2, side, side);
        PaintThemePicture(painter, mBitmap.GetPicture()->mName, place, isEnabled());
    }

private:
    host::Bitmap mBitmap;
    double mScale = 1;
};

struct PictureButtonImpl : host::ControlView::Impl {
    PictureToolButton* Button() const { return static_cast<PictureToolButton*>(mWidget.data()); }

    void Click(int commandID) {
        if (!mParent) return;
        if (host::TabView* panel = mParent->FindTabView()) TabViewImpl::Of(*panel).Pressed();
        CommandRouter::Instance().SendFrom(mParent->mView, commandID);
    }
};

}  // namespace
}  // namespace desk

namespace host {

PictureButton::PictureButton() : ControlView(std::make_unique<desk::PictureButtonImpl>()) {}

PictureButton::~PictureButton() = default;

void PictureButton::Create(View& parent, int commandID, const Rect& bounds, const Bitmap& bitmap) {
    if (IsCreated() || !parent.IsCreated()) return;
    auto& impl = static_cast<desk::PictureButtonImpl&>(GetImpl());
    auto* button = new desk::PictureToolButton(bitmap, parent.GetImpl().mWidget);
    button->setObjectName(QStringLiteral("command-%1").arg(commandID));
    QObject::connect(button, &QToolButton::clicked, button, [&impl, commandID] { impl.Click(commandID); });
    impl.Place(*button, parent, bounds);
}

void PictureButton::SetScale(float scale) {
    if (auto* button = static_cast<desk::PictureButtonImpl&>(GetImpl()).Button())
        button->SetScale(double(scale));
}

void PictureButton::SetStatusBarText(const UTF16String& text) {
    QWidget* const button = GetImpl().mWidget;
    if (!button) return;
    button->setStatusTip(desk::ToQString(text));
    button->setAccessibleDescription(desk::ToQString(text));
}

}  // namespace host
