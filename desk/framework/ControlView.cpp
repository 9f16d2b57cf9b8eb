#include "host/framework/ControlView.h"

#include "desk/core/names/QtStrings.h"
#include "desk/framework/ControlViewImpl.h"
#include "desk/toolkit/ControlImpl.h"

namespace host {

ControlView::Impl::~Impl() {
    Destroy();
}

void ControlView::Impl::Place(QWidget& widget, View& parent, const Rect& bounds) {
    mWidget = &widget;
    mParent = &parent.GetImpl();
    mParent->mControls.push_back(mControl);
    mControl->SetBounds(bounds);
    widget.show();
}

void ControlView::Impl::Destroy() {
    if (mParent) std::erase(mParent->mControls, mControl);
    mParent = nullptr;
    if (!mWidget) return;
    // The widget may be in the middle of the click that led here.
    mWidget->disconnect();
    mWidget->hide();
    mWidget->deleteLater();
    mWidget = nullptr;
}

void ControlView::Impl::SetToolTip(const QString& text) {
    mWidget->setToolTip(desk::ToToolTip(text));
    mWidget->setAccessibleName(text);
}

ControlView::ControlView(std::unique_ptr<Impl> impl) : mImpl(std::move(impl)) {
    mImpl->mControl = this;
}

ControlView::~ControlView() = default;

bool ControlView::IsCreated() const {
    return !mImpl->mWidget.isNull();
}

void ControlView::Destroy() {
    mImpl->Destroy();
}

void ControlView::Enable(bool enable) {
    if (mImpl->mWidget) mImpl->mWidget->setEnabled(enable);
}

bool ControlView::IsEnabled() const {
    return mImpl->mWidget && mImpl->mWidget->isEnabled();
}

void ControlView::Show(bool show) {
    if (mImpl->mWidget) mImpl->mWidget->setVisible(show);
}

void ControlView::SetBounds(const Rect& bounds) {
    if (!mImpl->mWidget) return;
    mImpl->mBounds = bounds;
    mImpl->mWidget->setGeometry(bounds.x, bounds.y, bounds.width, bounds.height);
}

Rect ControlView::GetBounds() const {
    return mImpl->mBounds;
}

void ControlView::SetToolTipText(const UTF16String& text) {
    if (mImpl->mWidget) mImpl->SetToolTip(desk::ToQString(text));
}

ValueChangedMessage::~ValueChangedMessage() = default;

SearchBoxLeftMessage::~SearchBoxLeftMessage() = default;

}  // namespace host
