#include "desk/toolkit/TreeHeader.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/ShapedText.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeImpl.h"

namespace desk {

namespace {

constexpr int kMargin = 8;
constexpr double kSmallestFont = 12;
constexpr double kLargestFont = 20;

}  // namespace

TreeHeader::TreeHeader(host::UI_MultiColumnTree::TreeImpl& tree, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), mTree(tree) {
    using HeaderImpl = host::UI_MultiColumnTreeHeaderRow::Impl;
    const auto header = [this] { return mTree.mHeader ? &HeaderImpl::Of(*mTree.mHeader) : nullptr; };
    setSectionsMovable(false);
    setStretchLastSection(false);
    setMinimumSectionSize(16);
    setHighlightSections(false);
    connect(this, &QHeaderView::sectionResized, this, [header](int section, int, int width) {
        if (auto* impl = header()) impl->SectionResized(section, width);
    });
    connect(this, &QHeaderView::sectionMoved, this, [header](int, int from, int to) {
        if (auto* impl = header()) impl->SectionMoved(from, to);
    });
    connect(this, &QHeaderView::sectionClicked, this, [header](int section) {
        if (auto* impl = header()) impl->SectionClicked(section);
    });
}

void TreeHeader::FollowRowHeight() {
    mFontHeight = std::clamp(std::round(mTree.mRowPixels * 0.5), kSmallestFont, kLargestFont);
    setFixedHeight(int(std::lround(mFontHeight * 2)));
    viewport()->update();
}

void TreeHeader::FollowViewWidth() {
    if (mTree.mHeader) host::UI_MultiColumnTreeHeaderRow::Impl::Of(*mTree.mHeader).ApplyWidths();
}

void TreeHeader::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(rect(), Theme::Color(ThemeColor::HeaderBackground));
    painter.fillRect(QRect(0, height() - 1, width(), 1), Theme::Color(ThemeColor::Line));
    painter.end();
    if (mTree.CountColumns() > 0) QHeaderView::paintEvent(event);
}

void TreeHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
    const auto& header = host::UI_MultiColumnTreeHeaderRow::Impl::Of(*mTree.mHeader);
    if (std::size_t(section) >= header.mColumns.size()) return;
    const auto& column = header.mColumns[std::size_t(section)];
    painter->fillRect(rect, Theme::Color(ThemeColor::HeaderBackground));
    painter->fillRect(QRect(rect.right(), rect.y(), 1, rect.height()), Theme::Color(ThemeColor::Line));
    painter->fillRect(QRect(rect.x(), rect.bottom(), rect.width(), 1), Theme::Color(ThemeColor::Line));

    QRectF text = QRectF(rect).adjusted(kMargin, 0, -kMargin - 1, -1);
    const double side = std::round(mFontHeight * 0.7);
    const bool isSorted = isSortIndicatorShown() && sortIndicatorSection() == section;
    if (isSorted) text.setWidth(std::max(0.0, text.width() - side - kMargin));
    painter->setPen(Theme::Color(ThemeColor::SecondaryText));
    const QString& title = column.mTitle;
    const double natural =
        DrawCachedText(painter, {reinterpret_cast<const char16_t*>(title.utf16()), std::size_t(title.size())},
                       text, mFontHeight, column.mAlignment);
    if (!isSorted) return;
    const bool isLeft = column.mAlignment == host::UI_Alignment::Left;
    const double x = isLeft ? text.x() + std::min(natural, text.width()) + kMargin : text.right() + kMargin;
    const bool isAscending = sortIndicatorOrder() == Qt::AscendingOrder;
    painter->drawPixmap(
        QPointF(std::round(x), std::round(rect.y() + (rect.height() - side) / 2)),
        Theme::Picture(isAscending ? "sort-ascending" : "sort-descending", side, devicePixelRatioF()));
}

}  // namespace desk
