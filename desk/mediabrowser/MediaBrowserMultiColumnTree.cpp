#include "host/mediabrowser/MediaBrowserMultiColumnTree.h"

#include <QPainter>
#include <algorithm>

#include "desk/toolkit/DrawbotImpl.h"
#include "desk/toolkit/ShapedText.h"
#include "desk/toolkit/TreeAccess.h"

namespace host {

namespace {

/// Space between a cell's edge and its text, in view units.
constexpr double kCellMargin = 8;

}  // namespace

MediaBrowserMultiColumnTree::MediaBrowserMultiColumnTree(int indentationLevels, float indentation) {
    desk::SetTreeIndentation(*this, indentationLevels, indentation);
}

MediaBrowserMultiColumnTree::~MediaBrowserMultiColumnTree() = default;

const std::vector<RowRef>& MediaBrowserMultiColumnTree::GetChildRowsOf(const UI_MultiColumnTreeRow* row) const {
    return row ? row->GetChildRows() : GetTopLevelRows();
}

void MediaBrowserMultiColumnTree::DrawCellText(Drawbot& drawbot, const UTF16String& text,
                                               const RectT<float>& cell, Point offset, float fontSize,
                                               UI_Alignment alignment) {
    Drawbot::Impl& impl = drawbot.GetImpl();
    const QRectF rect(double(cell.x) + kCellMargin + offset.x, double(cell.y) + offset.y,
                      double(cell.width) - 2 * kCellMargin - offset.x, double(cell.height));
    if (impl.mPainter) impl.mPainter->setPen(impl.mTextColor);
    const double width = desk::DrawCachedText(impl.mPainter, text, rect, double(fontSize), alignment);
    impl.mNaturalWidth = std::max(impl.mNaturalWidth, width + 2 * kCellMargin + offset.x);
}

}  // namespace host
