#pragma once

#include "desk/framework/PanelFrame.h"
#include "desk/framework/ViewImpl.h"
#include "host/framework/TabView.h"

namespace desk {

/// The desktop's half of a tab view: its frame, its tab and its duty. UI thread.
struct TabViewImpl : host::View::Impl {
    static TabViewImpl& Of(const host::TabView& view) { return static_cast<TabViewImpl&>(view.GetImpl()); }

    /// See `host::TabView::Create`.
    void Create(const host::UTF16String& handlerID, const host::UTF16String& title, PanelFrame& frame,
                bool show);

    void SetTitle(const host::UTF16String& title);

    /// Puts the view and its handler on duty, unless it is a panel on demand.
    void PutOnDuty();
    /// True for the view of a panel on demand (`PanelRegistry::SetOnDemand`).
    bool IsOnDemand() const;
    /// Gives the keyboard to what had it last in the view, else to its first list or tree, else to its first
    /// control; the view is on duty afterwards, if it can be.
    void TakeFocus();

    void Show(bool show) override;
    void WidgetResized(QSize size) override;
    void FocusEntered() override { PutOnDuty(); }
    void Pressed() override;
    void WidgetGone() override;
    host::TabView* FindTabView() override { return mTabView; }

    host::TabView* mTabView = nullptr;
    PanelFrame* mFrame = nullptr;
    host::UTF16String mHandlerID;
    host::UTF16String mTitle;

protected:
    void ReleaseSelf() override;
};

}  // namespace desk
