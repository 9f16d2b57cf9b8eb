#pragma once

#include <QString>
#include <QWidget>

class QAbstractButton;
class QPainter;

namespace desk {

class DockWorkspaceFrame;

/// The bar over a panel: its tab with the title, the button of the panel's menu, and one that closes it.
/// Dragging the bar moves the dock. UI thread.
class DockWorkspaceTitleBar : public QWidget {
public:
    explicit DockWorkspaceTitleBar(DockWorkspaceFrame& frame);

    void SetTitle(const QString& title);
    void SetOnDuty(bool isOnDuty);
    /// The dock is tabbed together with others: the tab stands above already, and only the buttons are left.
    void SetTabbed(bool isTabbed);
    /// Points the tab out for a moment.
    void Flash();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;

private:
    int TabWidth() const;
    void PaintTab(QPainter& painter) const;
    void PlaceButtons();
    void ShowMenu(QPoint screenPosition);

    DockWorkspaceFrame& mFrame;
    QString mTitle;
    QAbstractButton* mMenuButton;
    QAbstractButton* mCloseButton;
    bool mIsOnDuty = false;
    bool mIsTabbed = false;
    bool mIsFlashing = false;
};

}  // namespace desk
