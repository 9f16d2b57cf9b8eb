#pragma once

#include "host/toolkit/UI_MultiColumnTree.h"

namespace host {

/// The tree control of the media browser: the multi-column tree with the browser's look. UI thread.
class ZUHOST_API MediaBrowserMultiColumnTree : public UI_MultiColumnTree {
public:
    /// `indentationLevels`: how many levels are indented (deeper ones stand like the last one); 0 for all.
    /// `indentation`: width of one level as a fraction of the row height.
    MediaBrowserMultiColumnTree(int indentationLevels, float indentation);
    ~MediaBrowserMultiColumnTree() override;

    /// The rows below `row`, or the top-level rows when it is null, in display order.
    const std::vector<RowRef>& GetChildRowsOf(const UI_MultiColumnTreeRow* row) const;

    /// Draws a line of plain text into a cell: vertically centred, `offset` view units in from the browser's
    /// own cell margin, with the alignment of the cell's column, cut with an ellipsis where it does not fit.
    /// `fontSize` is the pixel size. Characters that would change the line or its direction are escaped.
    static void DrawCellText(Drawbot& drawbot, const UTF16String& text, const RectT<float>& cell, Point offset,
                             float fontSize, UI_Alignment alignment);
};

}  // namespace host
