#include "desk/app/ProgressPanel.h"

#include <QPointer>
#include <memory>

#include "desk/app/ProgressList.h"
#include "desk/framework/PanelRegistry.h"
#include "desk/framework/ViewImpl.h"
#include "host/core/Localizer.h"
#include "host/framework/Handler.h"
#include "host/framework/Identifiers.h"
#include "host/framework/TabView.h"
#include "host/framework/WindowRegistry.h"

namespace desk {
namespace {

constexpr char16_t kWindowTypeID[] = u"host.windowtype.progress";

host::UTF16String GetTitle() {
    return host::ZString("$$$/Desk/Progress/Title=Progress");
}

/// The panel's view: the list fills it.
class ProgressTabView final : public host::TabView {
public:
    explicit ProgressTabView(host::Commander* parent) : TabView(parent) {}

private:
    void FinishCreateSelf(const host::Rect& bounds) override {
        mList = new ProgressList(GetImpl().mWidget);
        mList->show();
        SetBoundsSelf(bounds);
    }
    void SetBoundsSelf(const host::Rect& bounds) override {
        if (mList) mList->setGeometry(0, 0, bounds.width, bounds.height);
    }
    void DestroySelf() override {
        delete mList;
        TabView::DestroySelf();
    }

    /// The widget's child.
    QPointer<ProgressList> mList;
};

class ProgressHandler final : public host::Handler {
public:
    explicit ProgressHandler(const host::UTF16String& path) : Handler(path, host::kProgressHandlerID) {}

    host::TabView* CreateTabViewSelf(host::WorkspaceFrame* frame) override {
        mView = std::make_unique<ProgressTabView>(this);
        host::TabView::Create(mView.get(), GetHandlerID(), GetTitle(), frame, true);
        return mView.get();
    }
    bool ShouldDestroyWhenClosed() const override { return true; }

private:
    std::unique_ptr<host::TabView> mView;
};

}  // namespace

void RegisterProgressPanel() {
    host::Handler::RegisterFactory(
        host::kProgressHandlerID,
        [](const host::UTF16String& path) -> host::Handler* { return new ProgressHandler(path); });
    PanelRegistry::Instance().SetOnDemand(host::kProgressHandlerID);
    host::AddWindowClass(kWindowTypeID, host::kProgressHandlerID, true);
    host::AddWindow(kWindowTypeID, host::kDefaultWindowID, GetTitle(), host::kDefaultWindowContextID);
}

}  // namespace desk
