#include "desk/framework/WindowPlacement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace desk {
namespace {

/// What one takes hold of: that much of the strip along the top edge.
constexpr int kHoldHeight = 24;
constexpr QSize kLeastHold(80, 12);

bool CanBeHeld(const QRect& window, const QRect& screen) {
    const QRect strip(window.x(), window.y(), window.width(), kHoldHeight);
    const QSize held = strip.intersected(screen).size();
    return held.width() >= std::min(kLeastHold.width(), window.width()) && held.height() >= kLeastHold.height();
}

/// From a screen to a window: 0 when they touch.
int FindDistance(const QRect& window, const QRect& screen) {
    const int across = std::max({0, screen.left() - window.right(), window.left() - screen.right()});
    const int along = std::max({0, screen.top() - window.bottom(), window.top() - screen.bottom()});
    return across + along;
}

}  // namespace

bool CanPlaceWindows() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

QRect FitOnScreen(const QRect& window, const QRect& available, const QMargins& frame) {
    const QRect place = available.marginsRemoved(frame);
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

QRect BringOntoScreen(const QRect& window, const QVector<QRect>& screens) {
    QRect all;
    for (const QRect& screen : screens) all |= screen;
    const QRect bounded(window.topLeft(), window.size().boundedTo(all.size()));
    const auto holds = [&](const QRect& screen) { return CanBeHeld(bounded, screen); };
    if (std::ranges::any_of(screens, holds)) return bounded;
    const QRect& nearest = *std::ranges::min_element(
        screens, {}, [&](const QRect& screen) { return FindDistance(bounded, screen); });
    return FitOnScreen(bounded, nearest, {});
}

void PlaceFloatingWindow(QWidget& window, const QRect& place) {
    QVector<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens()) screens.append(screen->availableGeometry());
    if (screens.isEmpty()) return;
    const QRect possible = BringOntoScreen(place, screens);
    if (CanPlaceWindows())
        window.setGeometry(possible);
    else
        window.resize(possible.size());
}

}  // namespace desk
