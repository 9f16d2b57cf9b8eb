#pragma once

#include <memory>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/core/Strings.h"
#include "host/framework/CommandHandler.h"
#include "host/toolkit/UI_Node.h"

namespace host {

class DC;

/// Base of the views that the host's window shows: a rectangle on the screen with a commander's duties.
/// UI thread.
class ZUHOST_API View : public CommandHandler {
public:
    struct Impl;

    ~View() override;

    /// True from the host's creation of the view until it is destroyed.
    bool IsCreated() const;

    /// The view's rectangle in its parent; position 0,0 for a tab view.
    Rect GetBounds() const;

    /// Gives the view a new rectangle and lays out what is in it (`SetBoundsSelf`).
    void SetBounds(const Rect& bounds);

    /// Shows or hides the view with all that is in it; shown by default.
    void Show(bool show);

    /// The toolkit's container that fills the view: where toolkit children are added.
    UI_Container* GetToolkitContainer() const;

    /// The host's own half of the view; for host libraries.
    Impl& GetImpl() const { return *mImpl; }

protected:
    View(Commander* parent, std::unique_ptr<Impl> impl);

    /// Called once, after the view has got its place on the screen.
    virtual void FinishCreateSelf(const Rect& bounds);
    /// Lays out the children; `bounds` is the view's new rectangle.
    virtual void SetBoundsSelf(const Rect& bounds);
    /// Paints the view's background, before its children.
    virtual void PaintSelf(DC& dc);
    /// The view (or a child of it) has got the keyboard focus.
    virtual void NowOnDuty();
    /// Undoes `FinishCreateSelf`; the base releases what the host holds. Called at most once, before the
    /// destructor, while the view is still created.
    virtual void DestroySelf();

private:
    friend struct Impl;
    std::unique_ptr<Impl> mImpl;
};

/// A view inside another view.
class ZUHOST_API SubView : public View {
public:
    /// `parent` is asked for the commands that this view does not answer; null for none.
    explicit SubView(Commander* parent);
    ~SubView() override;

    /// Creates the view in `parent`, which must be created, and runs `FinishCreateSelf`.
    void Create(View& parent, const Rect& bounds);

    /// Destroys the view (`DestroySelf`); harmless when it is not created.
    void Destroy();
};

}  // namespace host
