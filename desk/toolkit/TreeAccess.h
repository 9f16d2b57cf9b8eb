#pragma once

#include "host/core/Export.h"
#include "host/toolkit/UI_MultiColumnTree.h"

class QTreeView;

namespace desk {

/// The widget that shows a tree: for tests, for measuring and for whoever places things over it. It lives as
/// long as the tree. The header's height is part of it. UI thread.
ZUHOST_API QTreeView* GetTreeWidget(const host::UI_MultiColumnTree& tree);

/// Sets how deep a tree indents: at most `levels` (0 for all), each `fraction` of the row height wide.
ZUHOST_API void SetTreeIndentation(host::UI_MultiColumnTree& tree, int levels, float fraction);

/// What the tree's owner keeps with a row; may be empty. UI thread.
ZUHOST_API std::unique_ptr<host::UI_MultiColumnTreeRow::Data>& GetRowData(host::UI_MultiColumnTreeRow& row);

}  // namespace desk
