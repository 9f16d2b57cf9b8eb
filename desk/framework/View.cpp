#include "host/framework/View.h"

#include <QPainter>

#include "desk/core/log/Log.h"
#include "desk/framework/DCImpl.h"
#include "desk/framework/ViewImpl.h"
#include "desk/toolkit/WidgetContainer.h"
#include "host/core/Logging.h"
#include "host/framework/ControlView.h"

namespace host {

View::Impl::~Impl() {
    if (mWidget) mWidget->Dismiss();
}

void View::Impl::FinishCreate(const Rect& bounds) {
    mBounds = bounds;
    mIsCreated = true;
    try {
        mView->FinishCreateSelf(bounds);
    } catch (...) {
        Release();
        throw;
    }
}

void View::Impl::Destroy() {
    if (!mIsCreated || mIsDestroying) return;
    mIsDestroying = true;
    try {
        mView->DestroySelf();
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
    mIsDestroying = false;
    Release();
}

void View::Impl::Release() {
    ReleaseContent();
    ReleaseSelf();
    mIsCreated = false;
    if (mParent) std::erase(mParent->mChildren, this);
    mParent = nullptr;
    mContainer.reset();
    if (mWidget) mWidget->Dismiss();
    mWidget = nullptr;
}

void View::Impl::ReleaseContent() {
    while (!mChildren.empty()) {
        Impl* child = mChildren.back();
        mChildren.pop_back();
        child->Destroy();
    }
    while (!mControls.empty()) mControls.back()->Destroy();
}

void View::Impl::SetBounds(const Rect& bounds) {
    mBounds = bounds;
    if (mParent && mWidget) mWidget->setGeometry(bounds.x, bounds.y, bounds.width, bounds.height);
    try {
        mView->SetBoundsSelf(bounds);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void View::Impl::Refresh() {
    SetBounds(mBounds);
    if (!mWidget) return;
    mWidget->update();
    for (QWidget* child : mWidget->findChildren<QWidget*>()) child->update();
}

void View::Impl::Show(bool show) {
    if (mWidget) mWidget->setVisible(show);
}

void View::Impl::Paint(QPainter& painter) {
    DC::Impl target{painter};
    DC dc(target);
    try {
        mView->PaintSelf(dc);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void View::Impl::WidgetResized(QSize) {}

void View::Impl::FocusEntered() {
    CallNowOnDuty();
}

void View::Impl::CallNowOnDuty() {
    try {
        mView->NowOnDuty();
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void View::Impl::WidgetGone() {
    mWidget = nullptr;
    Destroy();
}

TabView* View::Impl::FindTabView() {
    return mParent ? mParent->FindTabView() : nullptr;
}

SearchBoxControl* View::Impl::FindEnabledSearchBox() const {
    for (ControlView* control : mControls)
        if (auto* field = dynamic_cast<SearchBoxControl*>(control); field && field->IsEnabled()) return field;
    for (const Impl* child : mChildren)
        if (SearchBoxControl* field = child->FindEnabledSearchBox()) return field;
    return nullptr;
}

View::View(Commander* parent, std::unique_ptr<Impl> impl) : CommandHandler(parent), mImpl(std::move(impl)) {
    mImpl->mView = this;
}

View::~View() {
    mImpl->Release();
}

bool View::IsCreated() const {
    return mImpl->mIsCreated;
}

Rect View::GetBounds() const {
    return mImpl->mBounds;
}

void View::SetBounds(const Rect& bounds) {
    mImpl->SetBounds(bounds);
}

void View::Show(bool show) {
    mImpl->Show(show);
}

UI_Container* View::GetToolkitContainer() const {
    if (!mImpl->mContainer && mImpl->mWidget) mImpl->mContainer = desk::CreateWidgetContainer(*mImpl->mWidget);
    return mImpl->mContainer.get();
}

void View::FinishCreateSelf(const Rect&) {}

void View::SetBoundsSelf(const Rect&) {}

void View::PaintSelf(DC&) {}

void View::NowOnDuty() {}

void View::DestroySelf() {
    mImpl->Release();
}

SubView::SubView(Commander* parent) : View(parent, std::make_unique<Impl>()) {}

SubView::~SubView() = default;

void SubView::Create(View& parent, const Rect& bounds) {
    Impl& impl = GetImpl();
    if (impl.mIsCreated || !parent.IsCreated()) {
        desk::Log(desk::LogLevel::Error,
                  "A view could not be created: it exists already, or its parent does not");
        return;
    }
    impl.mParent = &parent.GetImpl();
    impl.mParent->mChildren.push_back(&impl);
    impl.mWidget = new desk::ViewWidget(impl, impl.mParent->mWidget);
    impl.mWidget->setGeometry(bounds.x, bounds.y, bounds.width, bounds.height);
    impl.mWidget->show();
    impl.FinishCreate(bounds);
}

void SubView::Destroy() {
    GetImpl().Destroy();
}

}  // namespace host
