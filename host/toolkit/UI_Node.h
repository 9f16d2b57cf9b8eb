#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/core/RefCounted.h"

namespace host {

class UI_KeyboardEvent;

/// Names a timer of a node (`UI_NodeManager::GetUniqueTimerID`).
using UI_TimerID = unsigned;

/// Base of everything the toolkit shows. A node is light: only nodes that need one have a widget behind
/// them; the others are painted by what they stand in. UI thread.
class ZUHOST_API UI_Node : public RefCounted {
public:
    struct Impl;

    ~UI_Node() override;

    /// A name by which the node is found (UTF-8): the object name of its widget, for tests and assistive
    /// technology.
    void UI_SetNodeID(std::string_view id);

    /// The node's rectangle in its container, in view units. Setting it calls `UI_SizeChanged` with the
    /// rectangle at position 0,0 when the size has changed or was never set.
    void UI_SetBounds(const RectT<float>& bounds);
    /// What `UI_SetBounds` has set; all 0 before.
    RectT<float> UI_GetBounds() const;

    /// Shows or hides the node with all that is in it; shown by default.
    void UI_Show(bool show);
    /// What `UI_Show` has set: a shown node in a hidden container is nowhere to be seen.
    bool UI_IsShown() const;

    /// Starts a timer of this node: `UI_DoTimerNotify` is called every `seconds` (over 0) until the timer is
    /// removed. One of that ID that runs begins anew. The node's end ends its timers.
    void UI_InstallTimer(double seconds, UI_TimerID id);
    /// Ends a timer; no notification comes after that. A timer that does not run is a fault that is logged,
    /// unless `mayBeMissing` says that it may be so.
    void UI_RemoveTimer(UI_TimerID id, bool mayBeMissing);

    Impl& GetImpl() const { return *mImpl; }

protected:
    explicit UI_Node(std::unique_ptr<Impl> impl);

    /// Lays out what is in the node; `localBounds` is its rectangle at position 0,0. The base does nothing.
    virtual void UI_SizeChanged(const RectT<float>& localBounds);
    /// A key of the host's key table has been pressed while `node`, this one or one below it, had the keyboard.
    /// True when it has been dealt with; otherwise the container is asked, and then the key does what it does
    /// in `node`. The base answers false.
    virtual bool UI_DoKeyboardEvent(UI_Node* node, const UI_KeyboardEvent& event);
    /// A timer of this node is due. True when it has been dealt with; a timer that nobody knows is removed and
    /// logged. What it throws is logged. The base answers false.
    virtual bool UI_DoTimerNotify(UI_TimerID id);

private:
    friend struct Impl;
    std::unique_ptr<Impl> mImpl;
};

/// A node with children, which it keeps alive; later children are in front. UI thread.
class ZUHOST_API UI_Container : public UI_Node {
public:
    UI_Container();
    ~UI_Container() override;

    /// Adds a node that stands in no container.
    void AddChild(RefPtr<UI_Node> child);
    /// Takes a child out and lets go of it; nothing for a node that is no child of this one.
    void RemoveChild(UI_Node* child);
    /// The same for all children, the front one first.
    void RemoveAllChildren();
    /// In the order in which they were added.
    const std::vector<RefPtr<UI_Node>>& GetChildren() const;

protected:
    explicit UI_Container(std::unique_ptr<Impl> impl);
};

/// A view of the toolkit: a container that lays out its children. UI thread.
class ZUHOST_API UI_SubView : public UI_Container {
public:
    UI_SubView();
    ~UI_SubView() override;

protected:
    explicit UI_SubView(std::unique_ptr<Impl> impl);
};

}  // namespace host
