#pragma once

#include <optional>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/core/Strings.h"
#include "host/framework/Workspace.h"

class QWidget;

namespace host {
class TabView;
}

namespace desk {

/// A frame as the views see it: a dock of the workspace. UI thread.
class ZUHOST_API PanelFrame : public host::WorkspaceFrame {
public:
    /// Puts the view's widget (owned by the view) under the frame's tab, as the view of `handlerID`.
    virtual void Attach(host::TabView& view, QWidget& widget, const host::UTF16String& handlerID) = 0;
    /// Takes the widget out again; called while the view is being destroyed.
    virtual void Detach() = 0;
    virtual void SetTitle(const host::UTF16String& title) = 0;
    virtual void Show(bool show) = 0;
    virtual void BringToFront(bool takeFocus, bool flash) = 0;
    virtual void UpdateStackedDimensions(bool animate) = 0;
    /// Where the frame floats, in global units; absent while it is docked. See `host::TabView`.
    virtual std::optional<host::Rect> FindFloatingRect() const { return {}; }
    virtual void Dock() {}
    virtual void Float(const host::Rect& rect) { static_cast<void>(rect); }
};

}  // namespace desk
