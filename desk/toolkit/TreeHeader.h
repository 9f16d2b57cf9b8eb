#pragma once

#include <QHeaderView>

#include "host/toolkit/UI_MultiColumnTree.h"

namespace desk {

/// The widget of a header row.
class TreeHeader final : public QHeaderView {
public:
    TreeHeader(host::UI_MultiColumnTree::TreeImpl& tree, QWidget* parent);

    /// The height of its text and of itself follow the rows' height.
    void FollowRowHeight();
    /// The last column makes room for the vertical scroll bar.
    void FollowViewWidth();

protected:
    void paintSection(QPainter* painter, const QRect& rect, int section) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    host::UI_MultiColumnTree::TreeImpl& mTree;
    double mFontHeight = 13;
};

}  // namespace desk
