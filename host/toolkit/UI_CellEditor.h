#pragma once

#include <memory>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/toolkit/UI_MultiColumnTreeRow.h"
#include "host/toolkit/UI_TextEdit.h"

namespace host {

/// The editor of a tree's cells: lays a text edit over the view, above one cell, for one session. There is one
/// in each tree (`UI_MultiColumnTree::GetCellEditor`).
///
/// The edit belongs to the row and the column, not to a place: it follows scrolling, sorting, rows that come
/// and go, the order and widths of columns and the height of rows, whatever becomes of the nodes in the cell.
/// When the session ends, the edit leaves the view, its end function is called, and the tree has the keyboard,
/// unless the user gave that to something else. Nothing here holds rows in place: who begins a session holds
/// back what would change them. UI thread; waits for nothing.
class ZUHOST_API UI_CellEditor {
public:
    struct Impl;

    /// Opens `edit` over the cell of an opened row, which is scrolled into view, and gives it the keyboard.
    /// - `column`: the column's position, as `UI_MultiColumnTreeRow::GetCellView` takes it.
    /// - `place`: where the text stands in the cell, in view units of the cell. The edit is as high as the row
    ///   and goes on to the cell's right end at least; it grows with what is typed.
    /// - `edit` has its value, font and selection. The editor keeps it alive during the session.
    /// A session that is going on is committed before. Returns false, and does nothing, for a row that is no
    /// opened row of this tree, an unknown column, a null `edit`, and while the tree does not show.
    bool Begin(UI_MultiColumnTreeRow* row, unsigned column, RefPtr<UI_TextEdit> edit,
               const RectT<float>& place);

    /// Ends the session as cancelled; nothing when there is none. As whenever a session ends by itself, keys
    /// typed in the next second go nowhere: a letter meant for a name is no command.
    ///
    /// The session ends so by itself when its row is no opened row any more; then the status bar says that the
    /// item went away and its name was not changed.
    void End();

    /// The edited row, and the edit; empty and null while there is no session.
    RowRef GetRow() const;
    UI_TextEdit* GetTextEdit() const;

    explicit UI_CellEditor(std::unique_ptr<Impl> impl);
    ~UI_CellEditor();
    UI_CellEditor(const UI_CellEditor&) = delete;
    UI_CellEditor& operator=(const UI_CellEditor&) = delete;
    Impl& GetImpl() const { return *mImpl; }

private:
    std::unique_ptr<Impl> mImpl;
};

}  // namespace host
