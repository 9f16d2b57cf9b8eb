#include "host/toolkit/Bitmap.h"

#include <QFile>
#include <QPainter>
#include <cmath>
#include <map>
#include <memory>

#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/PictureImpl.h"
#include "desk/toolkit/Theme.h"
#include "host/toolkit/UI_StaticImage.h"

namespace host {

class DrawSupplier {};

DrawSupplier* GetDefaultDrawSupplier() {
    static DrawSupplier supplier;
    return &supplier;
}

Bitmap Bitmap::GetBitmap(std::string_view name, DrawSupplier*) {
    static std::map<std::string, std::unique_ptr<Picture>, std::less<>> pictures;
    Bitmap bitmap;
    auto found = pictures.find(name);
    if (found == pictures.end()) {
        const QString resource = QStringLiteral(":/pictures/%1.svg").arg(desk::ToQStringFromUTF8(name));
        if (name.empty() || !QFile::exists(resource)) return bitmap;
        found = pictures.emplace(std::string(name), std::make_unique<Picture>(std::string(name))).first;
    }
    bitmap.mPicture = found->second.get();
    return bitmap;
}

void Bitmap::FillPictureSupplyMessage(UI_ImageSupplyMessage& message, std::string_view decal) const {
    if (!mPicture) return;
    const Bitmap variant = decal.empty() ? *this : GetBitmap(mPicture->mName + std::string(decal), nullptr);
    message.SupplyBitmap(variant.IsValid() ? variant : *this);
}

Picture::~Picture() = default;

PictureRef GetGenericFolderIcon(DrawSupplier*, int, int) {
    return PictureRef(new desk::ThemePicture("folder"));
}

}  // namespace host

namespace desk {

void PaintThemePicture(QPainter& painter, const std::string& name, const QRectF& rect, bool enabled) {
    const double side = std::floor(std::min(rect.width(), rect.height()));
    if (side < 1) return;
    const QPixmap picture = Theme::Picture(name, side, painter.device()->devicePixelRatioF(), enabled);
    const QPointF corner(std::round(rect.x() + (rect.width() - side) / 2),
                         std::round(rect.y() + (rect.height() - side) / 2));
    painter.drawPixmap(corner, picture);
}

}  // namespace desk
