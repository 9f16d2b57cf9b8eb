#include "host/framework/TabView.h"

#include <stdexcept>

#include "desk/framework/TabViewImpl.h"
#include "desk/framework/TabViews.h"

namespace host {
namespace {

using desk::TabViewImpl;

/// A panel's window that floats beside the main one; null when the panel is docked.
const QWidget* FindFloatingWindow(const TabViewImpl& view) {
    const QWidget* window = view.mWidget ? view.mWidget->window() : nullptr;
    return window && window->parentWidget() ? window : nullptr;
}

bool AreNeighbours(const QWidget& a, const QWidget& b) {
    constexpr int kGap = 16;
    return &a != &b && a.frameGeometry().adjusted(-kGap, -kGap, kGap, kGap).intersects(b.frameGeometry());
}

}  // namespace

TabView::TabView(Commander* parent) : View(parent, std::make_unique<TabViewImpl>()) {
    TabViewImpl::Of(*this).mTabView = this;
}

TabView::~TabView() {
    GetImpl().Release();
}

void TabView::Create(TabView* tabView, const UTF16String& handlerID, const UTF16String& title,
                     WorkspaceFrame* frame, bool show) {
    auto* panelFrame = dynamic_cast<desk::PanelFrame*>(frame);
    if (!panelFrame || tabView->IsCreated())
        throw std::logic_error("a tab view needs a frame, and is created once");
    TabViewImpl::Of(*tabView).Create(handlerID, title, *panelFrame, show);
}

void TabView::SetTitle(const UTF16String& title) {
    TabViewImpl::Of(*this).SetTitle(title);
}

UTF16String TabView::GetTitle() const {
    return TabViewImpl::Of(*this).mTitle;
}

void TabView::Hide() {
    Show(false);
}

void TabView::BringToFront(bool takeFocus, bool flash) {
    TabViewImpl& impl = TabViewImpl::Of(*this);
    const bool mayTakeFocus = takeFocus && !impl.IsOnDemand();
    if (impl.mFrame) impl.mFrame->BringToFront(mayTakeFocus, flash);
    if (mayTakeFocus) impl.TakeFocus();
}

void TabView::Destroy() {
    GetImpl().Destroy();
}

// Widgets host toolkit children as they are, and Qt paints all of them by way of the window's buffer.
void TabView::SetHostsToolkitChildViews(bool) {}

void TabView::EnableDoubleBuffering(bool) {}

void TabView::UpdateStackedDimensions(bool animate) {
    if (desk::PanelFrame* frame = TabViewImpl::Of(*this).mFrame) frame->UpdateStackedDimensions(animate);
}

float TabView::GetStackedDimensionHeight() const {
    return 0;
}

int TabView::GetStackedDimensionHeightMin() const {
    return 0;
}

int TabView::GetStackedDimensionHeightMax() const {
    return 0;
}

bool TabView::IsDockedInMainWindow() const {
    const desk::PanelFrame* frame = TabViewImpl::Of(*this).mFrame;
    return frame && !frame->FindFloatingRect();
}

Rect TabView::GetFloatingWindowGlobalRect() const {
    const desk::PanelFrame* frame = TabViewImpl::Of(*this).mFrame;
    return frame ? frame->FindFloatingRect().value_or(Rect()) : Rect();
}

void TabView::SetPlace(bool docked, const Rect& rect) {
    desk::PanelFrame* frame = TabViewImpl::Of(*this).mFrame;
    if (frame) docked ? frame->Dock() : frame->Float(rect);
}

const char* TabView::GetFlyoutMenuID() const {
    return nullptr;
}

bool TabView::AllowTablessSelf() const {
    return true;
}

bool TabView::GetSnapSizesSelf(std::vector<Point>& sizes) const {
    const TabViewImpl& self = TabViewImpl::Of(*this);
    const QWidget* window = FindFloatingWindow(self);
    if (!window) return false;
    bool hasAny = false;
    for (const TabViewImpl* other : desk::TabViews::Instance().GetAll()) {
        const QWidget* neighbour = FindFloatingWindow(*other);
        if (!neighbour || !neighbour->isVisible() || !AreNeighbours(*window, *neighbour)) continue;
        sizes.push_back({other->mBounds.width, other->mBounds.height});
        hasAny = true;
    }
    return hasAny;
}

void TabView::DestroySelf() {
    View::DestroySelf();
}

HandlerWindowClosingMessage::HandlerWindowClosingMessage(UTF16String handlerID)
    : mHandlerID(std::move(handlerID)) {}

HandlerWindowClosingMessage::~HandlerWindowClosingMessage() = default;

}  // namespace host
