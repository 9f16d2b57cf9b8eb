#include "host/toolkit/UI_StaticImage.h"

#include <QPainter>

#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/PictureImpl.h"

namespace desk {

void StaticImageImpl::Paint(const LightPaint& paint) {
    if (!mSupply) return;
    host::UI_ImageSupplyMessage message;
    mSupply(message);
    const QRectF rect(0, 0, double(mBounds.width), double(mBounds.height));
    const bool enabled = (message.GetStateFlags() & host::kImageStateEnabled) != 0;
    if (const host::Bitmap::Picture* bitmap = message.GetBitmap().GetPicture())
        PaintThemePicture(paint.mPainter, bitmap->mName, rect, enabled);
    else if (const auto* picture = dynamic_cast<const ThemePicture*>(message.GetPicture().get()))
        PaintThemePicture(paint.mPainter, picture->mName, rect, enabled);
}

}  // namespace desk

namespace host {

UI_StaticImage::UI_StaticImage() : UI_ControlView(std::make_unique<desk::StaticImageImpl>()) {}
UI_StaticImage::~UI_StaticImage() = default;

void UI_StaticImage::SetImageSupplyFunction(SupplyFunction function) {
    auto& impl = static_cast<desk::StaticImageImpl&>(GetImpl());
    impl.mSupply = std::move(function);
    impl.ContentChanged();
}

}  // namespace host
