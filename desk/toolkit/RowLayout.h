#pragma once

#include "host/toolkit/UI_MultiColumnTree.h"

class QTreeView;

namespace desk {

/// Lays out all opened rows of a tree in its view: what `QTreeView` does itself, from the rows instead of
/// through the model, which is asked for each row's index, flags and children otherwise. It costs one look at
/// each opened row. The layout alone: geometries, scroll bars and painting follow
/// (`QAbstractItemView::doItemsLayout`). UI thread.
///
/// It writes the view's private list of items (Qt's `private/qtreeview_p.h`), as it was when this was compiled.
/// False with any other version of Qt: nothing was laid out then, and the view does it itself.
bool LayOutRows(QTreeView& view, const host::UI_MultiColumnTree::TreeImpl& tree);

/// Notes that a layout is due, and sets no time for it: it waits until somebody asks for it
/// (`QAbstractItemView::executeDelayedItemsLayout`) or until `TakeUpLayout`. False with any other version of
/// Qt: nothing was noted then. UI thread.
bool PutOffLayout(QTreeView& view);

/// Takes the note back. Returns true when there was one: the layout is to be scheduled then. UI thread.
bool TakeUpLayout(QTreeView& view);

}  // namespace desk
