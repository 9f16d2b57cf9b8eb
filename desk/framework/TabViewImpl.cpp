#include "desk/framework/TabViewImpl.h"

#include <QAbstractItemView>
#include <algorithm>
#include <utility>

#include "desk/core/names/QtStrings.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/PanelRegistry.h"
#include "desk/framework/TabViews.h"
#include "host/framework/Handler.h"

namespace desk {
namespace {

/// Also while the view's window is not shown yet: then it has the focus once the window is.
bool CanTakeFocus(const QWidget& widget, const QWidget& view) {
    return widget.isEnabled() && widget.isVisibleTo(&view) && (widget.focusPolicy() & Qt::TabFocus);
}

/// Widgets whose middles differ by less stand in one line.
constexpr int kLineTolerance = 12;

/// Has the Tab key go through the view as it is read: line by line from the top, each from the left.
void SetReadingOrder(const QWidget& view) {
    QList<QWidget*> widgets;
    for (QWidget* child : view.findChildren<QWidget*>())
        if (child->focusPolicy() & Qt::TabFocus) widgets.append(child);
    const auto middle = [&view](const QWidget* widget) {
        return widget->mapTo(&view, widget->rect().center());
    };
    std::ranges::stable_sort(widgets, {}, [&](const QWidget* widget) { return middle(widget).y(); });
    for (auto line = widgets.begin(); line != widgets.end();) {
        const int y = middle(*line).y();
        const auto end = std::find_if(line, widgets.end(), [&](const QWidget* widget) {
            return middle(widget).y() >= y + kLineTolerance;
        });
        std::stable_sort(line, end,
                         [&](const QWidget* a, const QWidget* b) { return middle(a).x() < middle(b).x(); });
        line = end;
    }
    for (qsizetype i = 1; i < widgets.size(); ++i) QWidget::setTabOrder(widgets[i - 1], widgets[i]);
}

QWidget* FindFocusTarget(const QWidget& view) {
    if (QWidget* last = view.focusWidget(); last && CanTakeFocus(*last, view)) return last;
    for (QAbstractItemView* list : view.findChildren<QAbstractItemView*>())
        if (CanTakeFocus(*list, view)) return list;
    for (QWidget* child : view.findChildren<QWidget*>())
        if (CanTakeFocus(*child, view)) return child;
    return nullptr;
}

}  // namespace

void TabViewImpl::Create(const host::UTF16String& handlerID, const host::UTF16String& title, PanelFrame& frame,
                         bool show) {
    host::TabView& view = *mTabView;
    mHandlerID = handlerID;
    mWidget = new ViewWidget(*this, nullptr);
    mFrame = &frame;
    frame.Attach(view, *mWidget, handlerID);
    SetTitle(title);
    TabViews::Instance().Add(*this);
    FinishCreate({0, 0, mWidget->width(), mWidget->height()});
    if (mWidget) SetReadingOrder(*mWidget);
    if (show && mFrame) {
        mFrame->Show(true);
        mFrame->BringToFront(false, false);
    }
}

void TabViewImpl::SetTitle(const host::UTF16String& title) {
    mTitle = title;
    if (mFrame) mFrame->SetTitle(title);
    if (mWidget) mWidget->setAccessibleName(ToQString(title));
}

void TabViewImpl::PutOnDuty() {
    if (!mIsCreated || IsOnDemand()) return;
    CommandRouter::Instance().SetOnDuty(host::Handler::FindHandler(mHandlerID), mTabView);
    CallNowOnDuty();
}

bool TabViewImpl::IsOnDemand() const {
    return PanelRegistry::Instance().IsOnDemand(mHandlerID);
}

void TabViewImpl::Pressed() {
    if (CommandRouter::Instance().GetViewOnDuty() != mTabView) PutOnDuty();
}

void TabViewImpl::TakeFocus() {
    if (!mWidget) return;
    if (QWidget* target = FindFocusTarget(*mWidget)) target->setFocus(Qt::ActiveWindowFocusReason);
    Pressed();
}

void TabViewImpl::Show(bool show) {
    if (mFrame) mFrame->Show(show);
}

void TabViewImpl::WidgetResized(QSize size) {
    if (!mIsCreated) return;
    SetBounds({0, 0, size.width(), size.height()});
    if (mWidget) SetReadingOrder(*mWidget);
}

void TabViewImpl::WidgetGone() {
    mFrame = nullptr;
    host::View::Impl::WidgetGone();
}

void TabViewImpl::ReleaseSelf() {
    TabViews::Instance().Remove(*this);
    CommandRouter::Instance().ForgetView(mTabView);
    if (PanelFrame* frame = std::exchange(mFrame, nullptr)) frame->Detach();
}

}  // namespace desk
