#include "desk/app/WindowPlacement.h"

#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace desk {
namespace {

/// What window managers put around a window, which is not known before it is shown.
constexpr QMargins kFrame(8, 44, 8, 8);

}  // namespace

QRect FitOnScreen(const QRect& window, const QRect& available) {
    const QRect place = available.marginsRemoved(kFrame);
    QRect fitted(window.topLeft(), window.size().boundedTo(place.size()));
    fitted.moveLeft(std::clamp(fitted.left(), place.left(), place.left() + place.width() - fitted.width()));
    fitted.moveTop(std::clamp(fitted.top(), place.top(), place.top() + place.height() - fitted.height()));
    return fitted;
}

void FitOnScreen(QWidget& window) {
    const QScreen* screen = window.screen();
    if (!screen || window.isMaximized() || window.isFullScreen()) return;
    const QRect fitted = FitOnScreen(window.geometry(), screen->availableGeometry());
    if (fitted.size() != window.size()) window.resize(fitted.size());
    // A window that was never moved has its place from the window manager.
    if (window.testAttribute(Qt::WA_Moved) && fitted.topLeft() != window.geometry().topLeft())
        window.setGeometry(fitted);
}

}  // namespace desk
