#pragma once

#include <QMargins>
#include <QRect>
#include <QVector>

#include "host/core/Export.h"

class QWidget;

namespace desk {

/// What window managers put around a window, which is not known before it is shown.
inline constexpr QMargins kWindowFrame(8, 44, 8, 8);

/// False where no program knows or chooses the places of its windows (Wayland); their sizes it does. UI thread.
ZUHOST_API bool CanPlaceWindows();

/// `window` (without its frame), made smaller and moved as far as it takes to have it and its frame within
/// `available`; in the same units. Any thread.
ZUHOST_API QRect FitOnScreen(const QRect& window, const QRect& available, const QMargins& frame = kWindowFrame);

/// Does so with a window that is not shown yet, on the screen where it will be; one that will fill the screen
/// stays as it is. UI thread.
ZUHOST_API void FitOnScreen(QWidget& window);

/// Where a window without a frame, whose top edge it is moved by, can stand: where it is, as long as one can take hold
/// of it there, else within the nearest of the screens (of which there is one at least). Never larger than all of
/// them. Any thread.
ZUHOST_API QRect BringOntoScreen(const QRect& window, const QVector<QRect>& screens);

/// Gives a floating window this place, or one near it on a screen; only the size where windows cannot be placed.
/// UI thread.
ZUHOST_API void PlaceFloatingWindow(QWidget& window, const QRect& place);

}  // namespace desk
