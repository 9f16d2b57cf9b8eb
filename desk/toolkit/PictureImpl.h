#pragma once

#include <string>

#include "host/toolkit/Bitmap.h"

class QPainter;
class QRectF;

/// What a bitmap names.
struct host::Bitmap::Picture {
    std::string mName;
};

namespace desk {

/// A picture for the panel that is one of the theme's.
struct ThemePicture final : host::Picture {
    explicit ThemePicture(std::string name) : mName(std::move(name)) {}
    const std::string mName;
};

/// Paints the theme's picture into `rect`, as large as fits, centred.
void PaintThemePicture(QPainter& painter, const std::string& name, const QRectF& rect, bool enabled);

}  // namespace desk
