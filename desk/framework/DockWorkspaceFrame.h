#pragma once

#include <QDockWidget>
#include <functional>

#include "desk/framework/PanelFrame.h"

class QMenu;

namespace desk {

class DockWorkspaceTitleBar;

/// A dock of the workspace: one panel under its tab. Stays, hidden, while its panel is closed, so that the
/// panel comes back where it was. Owned by the main window. UI thread.
class ZUHOST_API DockWorkspaceFrame : public QDockWidget, public PanelFrame {
public:
    /// `close` is called, later, when the user closes the panel.
    DockWorkspaceFrame(QWidget& window, const host::UTF16String& handlerID, std::function<void()> close);
    ~DockWorkspaceFrame() override;

    void Attach(host::TabView& view, QWidget& widget, const host::UTF16String& handlerID) override;
    void Detach() override;
    void SetTitle(const host::UTF16String& title) override;
    void Show(bool show) override;
    void BringToFront(bool takeFocus, bool flash) override;
    /// Docks share the window's height between them: a stacked height is no wish of theirs.
    void UpdateStackedDimensions(bool animate) override;
    std::optional<host::Rect> FindFloatingRect() const override;
    void Dock() override;
    void Float(const host::Rect& rect) override;

    const host::UTF16String& GetHandlerID() const { return mHandlerID; }
    /// The panel's view; null while the panel is closed.
    host::TabView* GetView() const { return mView; }
    /// True while the panel is open and not hidden.
    bool IsShown() const { return mView && (mIsWaiting || !isHidden()); }
    /// True when it is also the front one of the docks that are tabbed together.
    bool IsInFront() const { return IsShown() && (mIsWaiting || mIsInFront); }
    /// True when it floats, is not the active window, and may lie under another window of the program: nobody
    /// tells how windows are stacked.
    bool MayBeCovered() const;
    /// Gives the panel the keyboard, as the user wishes: also one on demand.
    void TakeFocus();
    bool HasKeyboard() const;
    /// Closes the panel later, when the current event is through.
    void RequestClose();
    /// The panel's own menu, then what can be done with its dock.
    void FillMenu(QMenu& menu);
    void ToggleFloating();
    /// The panel on duty may have changed; with `isTabbed`, Qt shows the tab.
    void UpdateTab(bool isTabbed);

    /// A panel that floats waits until the main window shows: a window that comes before the one that it stands
    /// in front of may end behind it.
    void setVisible(bool visible) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// True when the panel is not in the main window: alone in a window, or with others.
    bool IsAfloat() const;
    void ComeForward();

    QWidget& mWindow;
    host::UTF16String mHandlerID;
    std::function<void()> mClose;
    host::TabView* mView = nullptr;
    DockWorkspaceTitleBar* mTitleBar;
    QWidget* mContent;
    bool mIsInFront = true;
    /// Where the panel was to float last; it stays known where the desktop places windows.
    QPoint mWantedCorner;
    /// For the main window.
    bool mIsWaiting = false;
};

}  // namespace desk
