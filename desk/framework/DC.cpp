#include "host/framework/DC.h"

#include <algorithm>

#include "desk/framework/DCImpl.h"

namespace host {

void DC::FillRect(const Rect& rect, Color color, int alpha) {
    mImpl->mPainter.fillRect(rect.x, rect.y, rect.width, rect.height,
                             QColor(color.red, color.green, color.blue, std::clamp(alpha, 0, 255)));
}

}  // namespace host
