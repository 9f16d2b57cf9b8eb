#include "host/toolkit/UI_Node.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/NodeImpl.h"
#include "host/core/Logging.h"
#include "host/toolkit/UI_NodeManager.h"

namespace host {

UI_Node::Impl::~Impl() {
    if (mWidget) delete mWidget.data();
}

void UI_Node::Impl::Realize(QWidget& parent) {
    if (!mWidget) mWidget = CreateWidget(parent);
    if (mWidget) ApplyToWidget();
}

void UI_Node::Impl::Unrealize() {
    if (mWidget) delete mWidget.data();
}

QWidget* UI_Node::Impl::CreateWidget(QWidget&) {
    return nullptr;
}

void UI_Node::Impl::Paint(const desk::LightPaint&) {}

void UI_Node::Impl::ApplyToWidget() {
    mWidget->setObjectName(desk::ToQStringFromUTF8(mID));
    const int left = static_cast<int>(std::lround(mBounds.x));
    const int top = static_cast<int>(std::lround(mBounds.y));
    mWidget->setGeometry(left, top, static_cast<int>(std::lround(mBounds.Right())) - left,
                         static_cast<int>(std::lround(mBounds.Bottom())) - top);
    mWidget->setVisible(mIsShown);
}

void UI_Node::Impl::SetBounds(const RectT<float>& bounds) {
    const bool resized = !mHasBounds || bounds.width != mBounds.width || bounds.height != mBounds.height;
    if (!resized && bounds == mBounds) return;
    mBounds = bounds;
    mHasBounds = true;
    if (mWidget) ApplyToWidget();
    if (resized) SizeChanged();
}

void UI_Node::Impl::SetShown(bool shown) {
    if (mIsShown == shown) return;
    mIsShown = shown;
    if (mWidget) mWidget->setVisible(shown);
    ContentChanged();
}

void UI_Node::Impl::ContentChanged() {
    if (mWidget) {
        mWidget->update();
    } else if (mParent) {
        mParent->GetImpl().ContentChanged();
    }
}

bool UI_Node::Impl::OfferKey(const UI_KeyboardEvent& event) {
    try {
        for (UI_Node* node = mNode; node; node = node->mImpl->mParent)
            if (node->UI_DoKeyboardEvent(mNode, event)) return true;
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
    return false;
}

bool UI_Node::Impl::NotifyTimer(UI_TimerID id) {
    const RefPtr<UI_Node> keptAlive(mNode);
    try {
        return mNode->UI_DoTimerNotify(id);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
        return true;
    }
}

UI_Node::UI_Node(std::unique_ptr<Impl> impl) : mImpl(std::move(impl)) {
    mImpl->mNode = this;
}
UI_Node::~UI_Node() = default;

void UI_Node::UI_SetNodeID(std::string_view id) {
    mImpl->mID = id;
    if (mImpl->mWidget) mImpl->mWidget->setObjectName(desk::ToQStringFromUTF8(id));
}

void UI_Node::UI_SetBounds(const RectT<float>& bounds) {
    mImpl->SetBounds(bounds);
}
RectT<float> UI_Node::UI_GetBounds() const {
    return mImpl->mBounds;
}
void UI_Node::UI_Show(bool show) {
    mImpl->SetShown(show);
}
bool UI_Node::UI_IsShown() const {
    return mImpl->mIsShown;
}
bool UI_Node::UI_DoKeyboardEvent(UI_Node*, const UI_KeyboardEvent&) {
    return false;
}

bool UI_Node::UI_DoTimerNotify(UI_TimerID) {
    return false;
}

void UI_Node::UI_InstallTimer(double seconds, UI_TimerID id) {
    if (!mImpl->mTimers) mImpl->mTimers = std::make_unique<desk::NodeTimers>(*mImpl);
    mImpl->mTimers->Install(seconds, id);
}

void UI_Node::UI_RemoveTimer(UI_TimerID id, bool mayBeMissing) {
    if (mImpl->mTimers && mImpl->mTimers->Remove(id)) return;
    if (!mayBeMissing) desk::Log(desk::LogLevel::Error, "A timer is removed that does not run");
}

UI_NodeManager* UI_NodeManager::Get() {
    static UI_NodeManager sInstance;
    return &sInstance;
}

UI_TimerID UI_NodeManager::GetUniqueTimerID() {
    return ++mLastTimerID;
}

void UI_Node::UI_SizeChanged(const RectT<float>&) {}

UI_Container::UI_Container() : UI_Container(std::make_unique<desk::ContainerImpl>()) {}
UI_Container::UI_Container(std::unique_ptr<Impl> impl) : UI_Node(std::move(impl)) {}
UI_Container::~UI_Container() {
    RemoveAllChildren();
}
void UI_Container::AddChild(RefPtr<UI_Node> child) {
    desk::ContainerImpl::Of(*this).AddChild(std::move(child));
}
void UI_Container::RemoveChild(UI_Node* child) {
    desk::ContainerImpl::Of(*this).RemoveChild(child);
}
void UI_Container::RemoveAllChildren() {
    desk::ContainerImpl::Of(*this).RemoveAllChildren();
}

const std::vector<RefPtr<UI_Node>>& UI_Container::GetChildren() const {
    return desk::ContainerImpl::Of(*this).mChildren;
}

UI_SubView::UI_SubView() = default;
UI_SubView::UI_SubView(std::unique_ptr<Impl> impl) : UI_Container(std::move(impl)) {}
UI_SubView::~UI_SubView() = default;

}  // namespace host

namespace desk {

void ContainerImpl::AddChild(host::RefPtr<host::UI_Node> child) {
    if (!child || child->GetImpl().mParent) return;
    host::UI_Node& node = *child;
    node.GetImpl().mParent = static_cast<host::UI_Container*>(mNode);
    mChildren.push_back(std::move(child));
    if (mWidget) node.GetImpl().Realize(*mWidget);
    ChildAdded(node);
    ContentChanged();
}

void ContainerImpl::RemoveChild(host::UI_Node* child) {
    const auto found = std::find(mChildren.begin(), mChildren.end(), child);
    if (found == mChildren.end()) return;
    const host::RefPtr<host::UI_Node> removed = std::move(*found);
    mChildren.erase(found);
    removed->GetImpl().mParent = nullptr;
    removed->GetImpl().Unrealize();
    ContentChanged();
}

void ContainerImpl::RemoveAllChildren() {
    while (!mChildren.empty()) RemoveChild(mChildren.back().get());
}

void ContainerImpl::Realize(QWidget& parent) {
    Impl::Realize(parent);
    if (!mWidget) return;
    for (const auto& child : mChildren) child->GetImpl().Realize(*mWidget);
}

void ContainerImpl::Unrealize() {
    for (const auto& child : mChildren) child->GetImpl().Unrealize();
    Impl::Unrealize();
}

QWidget* ContainerImpl::CreateWidget(QWidget& parent) {
    return new NodeWidget(*this, &parent);
}

void ContainerImpl::Paint(const LightPaint& paint) {
    for (const auto& child : mChildren) PaintLightNode(*child, paint);
}

double ContainerImpl::NaturalWidth() {
    double width = 0;
    for (const auto& child : mChildren)
        width = std::max(width, double(child->GetImpl().mBounds.x) + child->GetImpl().NaturalWidth());
    return width;
}

void PaintLightNode(host::UI_Node& node, const LightPaint& paint) {
    host::UI_Node::Impl& impl = node.GetImpl();
    if (!impl.mIsShown || impl.mWidget) return;
    const QPointF corner(double(impl.mBounds.x), double(impl.mBounds.y));
    paint.mPainter.translate(corner);
    impl.Paint(paint);
    paint.mPainter.translate(-corner);
}

void NodeWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    mNode->Paint({painter, palette().color(QPalette::WindowText)});
}

}  // namespace desk
