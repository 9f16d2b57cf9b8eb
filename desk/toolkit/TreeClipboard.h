#pragma once

#include "host/core/Export.h"

class QWidget;

namespace desk {

/// Cutting and pasting rows, for who does not drag: cut is what would be dragged, and pasted rows, or files of
/// another program, are dropped on the row that is selected, in this window or in another. The tree is the one
/// that has the keyboard, or the one below `view` while the menu bar has it. UI thread.

ZUHOST_API bool CanCutRows(const QWidget* view);
ZUHOST_API void CutRows(const QWidget* view);
ZUHOST_API bool CanPasteOnRows(const QWidget* view);
ZUHOST_API void PasteOnRows(const QWidget* view);

}  // namespace desk
