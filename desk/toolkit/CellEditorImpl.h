#pragma once

#include <QRect>

#include "host/toolkit/UI_CellEditor.h"
#include "host/toolkit/UI_MultiColumnTree.h"

/// The desktop's half of a tree's editor of cells.
struct host::UI_CellEditor::Impl {
    using TreeImpl = UI_MultiColumnTree::TreeImpl;

    explicit Impl(TreeImpl& tree) : mTree(tree) {}

    bool Begin(const RowRef& row, int appended, RefPtr<UI_TextEdit> edit, const RectT<float>& place);
    /// Puts the edit where its cell is now, or ends the session when that is nowhere.
    void Follow();
    void EndByItself(bool tellsUser);
    /// The tree goes: the session ends without a word.
    void Abandon();

    void Open();
    void Close();
    void TellRowWent() const;
    QRect FindPlace() const;

    TreeImpl& mTree;
    RowRef mRow;
    /// The row's name, which a row that has gone does not tell.
    UTF16String mName;
    RefPtr<UI_TextEdit> mEdit;
    /// By order of appending.
    int mColumn = 0;
    /// Where the text stands in the cell, in row heights.
    float mTextLeft = 0;
};
