#pragma once

#include "host/core/Messaging.h"
#include "host/framework/View.h"

namespace host {

class WorkspaceFrame;

/// The main view of a panel, shown under a tab. UI thread.
class ZUHOST_API TabView : public View {
public:
    explicit TabView(Commander* parent);
    ~TabView() override;

    /// Puts `tabView` into `frame` under a tab with `title`, as the view of the handler `handlerID`, and
    /// runs its `FinishCreateSelf`; with `show` it is shown at once. The view is owned by its handler.
    static void Create(TabView* tabView, const UTF16String& handlerID, const UTF16String& title,
                       WorkspaceFrame* frame, bool show);

    /// The text on the tab; plain text.
    void SetTitle(const UTF16String& title);
    UTF16String GetTitle() const;

    /// Takes the tab out of sight; the view stays as it is.
    void Hide();

    /// Makes the tab the front one of its frame; with `takeFocus` it also gets the keyboard, with
    /// `flash` the tab is pointed out to the user.
    void BringToFront(bool takeFocus, bool flash);

    /// Destroys the view (`DestroySelf`); harmless when it is not created.
    void Destroy();

    /// Marks that the view hosts children of the toolkit.
    void SetHostsToolkitChildViews(bool hosts);
    /// Paints by way of a buffer, so that nothing flickers.
    void EnableDoubleBuffering(bool enable);

    /// Tells the frame that the stacked height of the view has changed. A frame that stacks its panels moves
    /// there, with `animate` smoothly; one that shares the window's height with others, as a dock does, keeps
    /// the height that the user has given it.
    void UpdateStackedDimensions(bool animate);

    /// Heights for frames that stack their panels, and no others, in view units: the height of all content,
    /// and the bounds that the frame keeps to. The base answers 0, 0 and 0: no wish.
    virtual float GetStackedDimensionHeight() const;
    virtual int GetStackedDimensionHeightMin() const;
    virtual int GetStackedDimensionHeightMax() const;

    /// True when the panel stands in the main window, false when it floats in a window of its own.
    bool IsDockedInMainWindow() const;
    /// The place of the window in which the panel floats, without its frame, in global screen units; all zero
    /// for a panel that is docked. Where no program knows the places of its windows (Wayland), x and y are 0.
    Rect GetFloatingWindowGlobalRect() const;
    /// Docks the panel in the main window, where it was docked last, or lets it float in `rect` (ignored when
    /// docked), as far as that is on a screen. Where no program places its windows, only the size is followed.
    /// The keyboard stays where it is.
    void SetPlace(bool docked, const Rect& rect);

    /// The ID of the flyout menu that the tab offers; null for none.
    virtual const char* GetFlyoutMenuID() const;

    /// True when the panel may be shown without its tab. The base answers true.
    virtual bool AllowTablessSelf() const;

    /// Sizes at which resizing the panel snaps. Appends to `sizes` and returns true when there are any;
    /// the base offers the size of the frame's neighbour when the panel floats beside one.
    virtual bool GetSnapSizesSelf(std::vector<Point>& sizes) const;

protected:
    void DestroySelf() override;
};

/// Announced (later) on `kStation_WindowClosing` by a panel whose view is being destroyed: the host gives the
/// keyboard to the project in front, if the panel had it.
class ZUHOST_API HandlerWindowClosingMessage : public MessageTemplate<HandlerWindowClosingMessage> {
public:
    /// `handlerID`: the panel's.
    explicit HandlerWindowClosingMessage(UTF16String handlerID);
    ~HandlerWindowClosingMessage() override;
    const UTF16String& GetHandlerID() const { return mHandlerID; }

private:
    UTF16String mHandlerID;
};

inline const StationID kStation_WindowClosing{"host.windowclosing"};

}  // namespace host
