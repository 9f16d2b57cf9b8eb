#include <memory>

#include "host/framework/DC.h"
#include "host/framework/Handler.h"
#include "host/framework/Identifiers.h"
#include "host/framework/PluginEntry.h"
#include "host/framework/TabView.h"
#include "host/framework/WindowRegistry.h"

namespace {

constexpr char16_t kHandlerID[] = u"outside.handler";
constexpr char16_t kWindowTypeID[] = u"outside.windowtype";

class OutsideView : public host::TabView {
public:
    using TabView::TabView;

private:
    void PaintSelf(host::DC& dc) override { dc.FillRect(GetBounds(), {70, 90, 200}, 255); }
};

class OutsideHandler : public host::Handler {
public:
    explicit OutsideHandler(const host::UTF16String& path) : Handler(path, kHandlerID) {
        host::AddWindowClass(kWindowTypeID, kHandlerID, true);
        host::AddWindow(kWindowTypeID, host::kDefaultWindowID, u"Outside", host::kDefaultWindowContextID);
    }
    ~OutsideHandler() override { host::RemoveWindowClass(kWindowTypeID); }

    host::TabView* CreateTabViewSelf(host::WorkspaceFrame* frame) override {
        mView = std::make_unique<OutsideView>(this);
        host::TabView::Create(mView.get(), kHandlerID, u"Outside", frame, true);
        return mView.get();
    }
    bool ShouldDestroyWhenClosed() const override { return true; }

private:
    std::unique_ptr<OutsideView> mView;
};

[[maybe_unused]] const bool sIsRegistered = host::Handler::RegisterFactory(
    kHandlerID, [](const host::UTF16String& path) -> host::Handler* { return new OutsideHandler(path); });

}  // namespace

ZUHOST_PLUGIN_ENTRY("Outside");
