#pragma once

#include <QRect>
#include <QSize>

class QWidget;

namespace desk {

/// `window` (without its frame), made smaller and moved as far as it takes to have it and its frame within
/// `available`; in the same units. Any thread.
QRect FitOnScreen(const QRect& window, const QRect& available);

/// Does so with a window that is not shown yet, on the screen where it will be; one that will fill the screen
/// stays as it is. UI thread.
void FitOnScreen(QWidget& window);

}  // namespace desk
