#pragma once

#include <functional>
#include <memory>

#include "host/core/Strings.h"
#include "host/toolkit/UI_Node.h"

namespace host {

class UI_ControlView;

/// Tells that a control's value has changed.
struct UI_ChangeMessage {
    UI_ControlView* mControl;
};

/// A change notification: shared, so that it can be handed on without copying what it holds.
using UI_ChangeFunction = std::shared_ptr<std::function<void(const UI_ChangeMessage&)>>;

/// Base of the toolkit's controls. UI thread.
class ZUHOST_API UI_ControlView : public UI_Node {
public:
    ~UI_ControlView() override;

    /// Plain, localised text, shown after the pointer has rested for `delayMilliseconds`; also the control's
    /// name for assistive technology where it has no other.
    void SetToolTipText(const UTF16String& text, int delayMilliseconds);

    /// Called when the user has finished changing the value (the mouse button is up again).
    void NotifyWhenChanged(UI_ChangeFunction function);

protected:
    using UI_Node::UI_Node;
};

/// A control whose value changes while the user is still at it. UI thread.
class ZUHOST_API UI_InteractiveControlView : public UI_ControlView {
public:
    ~UI_InteractiveControlView() override;

    /// Called at every change that the user makes.
    void NotifyWhenChangedInteractively(UI_ChangeFunction function);

protected:
    using UI_ControlView::UI_ControlView;
};

}  // namespace host
