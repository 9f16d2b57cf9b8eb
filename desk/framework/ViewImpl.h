#pragma once

#include <QPointer>
#include <vector>

#include "desk/framework/ViewWidget.h"
#include "host/framework/View.h"

namespace host {
class ControlView;
class SearchBoxControl;
class TabView;
}  // namespace host

/// The desktop's half of a view: its widget, and what stands in it. UI thread.
struct host::View::Impl {
    Impl() = default;
    virtual ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Marks the view created and runs its `FinishCreateSelf`; when that throws, the view is released again
    /// and the exception goes on.
    void FinishCreate(const Rect& bounds);
    /// Runs `DestroySelf` once, then releases what is still held. Harmless when the view is not created.
    void Destroy();
    /// Gives up children, controls, container and widget. Harmless when there is nothing to give up.
    void Release();

    void SetBounds(const Rect& bounds);
    /// Lays the view out anew in the bounds it has, and paints it and all in it.
    void Refresh();
    virtual void Show(bool show);

    // What the widget tells. What the view's own operations throw is logged.
    void Paint(QPainter& painter);
    virtual void WidgetResized(QSize size);
    virtual void FocusEntered();
    virtual void Pressed() {}
    /// The widget is being destroyed by somebody else (its window).
    virtual void WidgetGone();

    /// The tab view that the view stands in or is; null when there is none.
    virtual TabView* FindTabView();
    /// The first search field, in order of creation, that is created and enabled, in the view or a view in it.
    SearchBoxControl* FindEnabledSearchBox() const;

    View* mView = nullptr;
    Impl* mParent = nullptr;
    QPointer<desk::ViewWidget> mWidget;
    RefPtr<UI_Container> mContainer;
    std::vector<Impl*> mChildren;
    std::vector<ControlView*> mControls;
    Rect mBounds;
    bool mIsCreated = false;

protected:
    void CallNowOnDuty();
    /// Gives up what the kind of view holds beyond the rest; the widget is still there.
    virtual void ReleaseSelf() {}

private:
    void ReleaseContent();

    bool mIsDestroying = false;
};
