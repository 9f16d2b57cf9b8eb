#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QTreeView>
#include <chrono>

#include "desk/toolkit/EmptyButtons.h"
#include "desk/toolkit/TreeDrop.h"
#include "desk/toolkit/TreeHeader.h"
#include "host/toolkit/UI_MultiColumnTree.h"

namespace desk {

class BusySpinner;

/// The widget of a tree. It paints rows and takes the user's input; what comes of it is the tree's to decide.
class TreeView final : public QTreeView {
public:
    explicit TreeView(host::UI_MultiColumnTree::TreeImpl& tree);
    ~TreeView() override;

    host::UI_MultiColumnTree::TreeImpl& GetTree() const { return mTree; }
    BusySpinner& GetSpinner() { return *mSpinner; }
    EmptyButtons& GetEmptyButtons() { return *mEmptyButtons; }
    /// Rows have come, gone or changed places: has them laid out in the next turn of the event loop, or when
    /// the pause is over.
    void ScheduleLayout();
    void FlushLayout();
    void RowHeightChanged();
    void SetExpanded(const QModelIndex& index, bool expanded);
    void AnnounceRowChanged(const QModelIndex& index);
    /// Rows are leaving; the one under the pointer may be among them.
    void ForgetHover() { mHovered = nullptr; }
    /// While nothing is painted, nothing needs to be laid out either.
    bool IsPaused() const { return mPause.isActive(); }
    /// Paints what there is by now. Whoever does something sees at once what comes of it.
    void EndPause();
    TreeDrop& GetDrop() { return mDrop; }
    // The clipboard (TreeClipboard.cpp).
    bool CanCut() const;
    void Cut();
    bool CanPaste() const;
    void Paste();
    /// The opened row at a point of the viewport; null for none.
    host::UI_MultiColumnTreeRow* RowAt(const QPoint& point) const;
    host::Point ToTreePoint(const QPoint& point) const;
    /// Where an opened row stands in the viewport; empty for any other.
    QRect RectOf(const host::UI_MultiColumnTreeRow* row) const;

    // What the user does, with whatever hand or program.

    /// Opens or closes a row; with Alt all below it too, which is up to who listens to disclosures.
    void ToggleByUser(host::UI_MultiColumnTreeRow& row, bool open);
    /// Selects a row alone.
    void SelectByUser(host::UI_MultiColumnTreeRow& row);

    void doItemsLayout() override;
    void keyboardSearch(const QString& typed) override;
    void selectAll() override;

protected:
    // Painting (TreeView_Painting.cpp).
    void paintEvent(QPaintEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    int sizeHintForColumn(int column) const override;
    void timerEvent(QTimerEvent* event) override;

    // Input (TreeView_Input.cpp).
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;

    void scrollContentsBy(int dx, int dy) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    using Row = host::UI_MultiColumnTreeRow;
    using Clock = std::chrono::steady_clock;

    void PausePainting(Clock::duration layoutTime);
    void PaintBackground(QPainter& painter, const QRect& rect, Row& row) const;
    void PaintCell(QPainter& painter, const QRect& rect, Row& row, int column) const;
    void PaintTriangle(QPainter& painter, const QRect& rect, Row& row) const;
    void PaintLines(QPainter& painter, const QRect& rect) const;
    void PaintEmptyText();
    void PaintDropTarget(QPainter& painter, const QRect& rect) const;
    /// The row whose triangle stands at `point`; null for none.
    Row* TriangleAt(const QPoint& point) const;
    void Hover(Row* row);
    /// Tells the owner of a single click that begins at `point`, when it is one.
    void TellPressed(const QMouseEvent& event);
    /// Takes note of a press from which a drag may come.
    void PrepareDrag(const QMouseEvent& event);
    bool MayDragNow(const QMouseEvent& event) const;
    void Drag(const QMouseEvent& event);
    void SetAllBelowOpen(Row& row, bool open);
    bool HandleMenuKey(const QKeyEvent& event);
    bool HandleByOwner(const QKeyEvent& event);
    bool HandleOpenKey(const QKeyEvent& event);
    bool HandleClipboardKey(const QKeyEvent& event);
    void TellDoubleClicked();
    bool HandleTreeKey(int key, Row& current);
    /// The row that Return and the menu key mean: the current one if it is selected, else the one that was
    /// selected last; null when none is.
    Row* RowForKeyboard() const;

    host::UI_MultiColumnTree::TreeImpl& mTree;
    TreeHeader* mHeader;
    BusySpinner* mSpinner;
    EmptyButtons* mEmptyButtons;
    const Row* mHovered = nullptr;
    /// On while nothing is painted.
    QBasicTimer mPause;
    /// What the last layout took; zero once it is painted.
    Clock::duration mLayoutTime{};
    bool mIsPainting = false;
    /// The mouse button that is down went down on a triangle.
    bool mHasPressedTriangle = false;
    /// The press that is being handled has given the view the keyboard.
    bool mHasFocusByPress = false;
    /// The owner has heard of the mouse button that is down.
    bool mHasToldPress = false;
    TreeDrop mDrop;
    /// The selected row on which the left button went down, until it is dragged or let go; where and when.
    host::RowRef mRowToDrag;
    QPoint mPressPoint;
    Clock::time_point mPressTime{};
    QString mTyped;
    QElapsedTimer mSinceTyped;
};

}  // namespace desk
