#pragma once

#include <QPixmap>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <functional>

#include "host/toolkit/DataTransfer.h"

/// The widget out of which is dragged, or cut.
struct host::OS_Event::Impl {
    QPointer<QWidget> mWidget;
    bool mIsCut = false;
};

namespace desk {

/// The name of a panel's own data type as other processes know it (RFC 2045 allows no "/" in it).
QString MimeTypeOf(std::string_view type);

/// Runs `task` later, when no drag out of this process goes on: what a drop sets off is not the drag's affair.
ZUHOST_API void RunAfterDrag(std::function<void()> task);
/// A target in this process has taken what is being dragged.
void NoteDropInThisProcess();

/// The first item's name with the number of items, for beside the pointer.
QPixmap DrawDragPicture(const QString& name, std::size_t count, qreal devicePixelRatio);

}  // namespace desk
