#include "desk/framework/DockWorkspaceFrame.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QPainter>
#include <QResizeEvent>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>

#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/DockWorkspaceTitleBar.h"
#include "desk/framework/MenuResources.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/framework/WindowPlacement.h"
#include "desk/toolkit/Theme.h"
#include "host/framework/TabView.h"

namespace desk {
namespace {

/// Holds the view's widget and wishes for the size it has: a panel that is moved keeps it where there is room.
class Content : public QWidget {
public:
    explicit Content(QWidget* parent) : QWidget(parent) { (new QVBoxLayout(this))->setContentsMargins({}); }

    QSize sizeHint() const override { return mLastSize; }
    QSize minimumSizeHint() const override { return {260, 160}; }

protected:
    void resizeEvent(QResizeEvent* event) override { mLastSize = event->size(); }

private:
    QSize mLastSize{480, 400};
};

}  // namespace

DockWorkspaceFrame::DockWorkspaceFrame(QWidget& window, const host::UTF16String& handlerID,
                                       std::function<void()> close)
    : QDockWidget(&window),
      mWindow(window),
      mHandlerID(handlerID),
      mClose(std::move(close)),
      mTitleBar(new DockWorkspaceTitleBar(*this)),
      mContent(new Content(this)) {
    setObjectName(ToQString(handlerID));
    setFeatures(DockWidgetClosable | DockWidgetMovable | DockWidgetFloatable);
    setTitleBarWidget(mTitleBar);
    setWidget(mContent);
    connect(this, &QDockWidget::visibilityChanged, this, [this](bool isInFront) { mIsInFront = isInFront; });
    window.installEventFilter(this);
    hide();
}

DockWorkspaceFrame::~DockWorkspaceFrame() = default;

void DockWorkspaceFrame::Attach(host::TabView& view, QWidget& widget, const host::UTF16String&) {
    mView = &view;
    mContent->layout()->addWidget(&widget);
    widget.show();
}

void DockWorkspaceFrame::Detach() {
    while (QLayoutItem* item = mContent->layout()->takeAt(0)) delete item;
    mView = nullptr;
    hide();
}

void DockWorkspaceFrame::SetTitle(const host::UTF16String& title) {
    const QString text = ToDisplayText(title);
    mTitleBar->SetTitle(text);
    // Qt puts the window's title on the tab of docks that are tabbed together, where "&" marks a key.
    setWindowTitle(ToWindowTitle(text).replace(QLatin1Char('&'), QLatin1String("&&")));
}

void DockWorkspaceFrame::Show(bool show) {
    setVisible(show && mView);
}

void DockWorkspaceFrame::BringToFront(bool takeFocus, bool flash) {
    if (!mView) return;
    show();
    raise();
    if (takeFocus) activateWindow();
    if (flash) mTitleBar->Flash();
}

void DockWorkspaceFrame::UpdateStackedDimensions(bool) {}

std::optional<host::Rect> DockWorkspaceFrame::FindFloatingRect() const {
    if (!IsAfloat()) return {};
    const QRect place = window()->geometry();
    const QPoint corner = CanPlaceWindows() ? place.topLeft() : mWantedCorner;
    return host::Rect{corner.x(), corner.y(), place.width(), place.height()};
}

void DockWorkspaceFrame::Dock() {
    setFloating(false);
}

void DockWorkspaceFrame::Float(const host::Rect& rect) {
    mWantedCorner = {rect.x, rect.y};
    if (!IsAfloat()) setFloating(true);
    PlaceFloatingWindow(*window(), QRect(rect.x, rect.y, rect.width, rect.height));
}

void DockWorkspaceFrame::setVisible(bool visible) {
    mIsWaiting = visible && isFloating() && !mWindow.isVisible();
    if (!mIsWaiting) QDockWidget::setVisible(visible);
}

bool DockWorkspaceFrame::eventFilter(QObject* watched, QEvent* event) {
    // Later: the event comes before the window is there.
    if (watched == &mWindow && event->type() == QEvent::Show)
        QMetaObject::invokeMethod(
            this, [this] { ComeForward(); }, Qt::QueuedConnection);
    return QDockWidget::eventFilter(watched, event);
}

void DockWorkspaceFrame::ComeForward() {
    if (mIsWaiting) return setVisible(true);
    // Docks that float together are in a window that Qt shows when it likes.
    if (IsAfloat() && isVisible()) window()->raise();
}

bool DockWorkspaceFrame::IsAfloat() const {
    return window() != &mWindow;
}

bool DockWorkspaceFrame::MayBeCovered() const {
    if (!IsAfloat()) return false;
    // Not the active window: without a window manager it is another one only once the menu has closed.
    if (const QWindow* own = window()->windowHandle(); own && own == QGuiApplication::focusWindow())
        return false;
    if (!CanPlaceWindows()) return true;
    return std::ranges::any_of(QApplication::topLevelWidgets(), [this](const QWidget* other) {
        // Desktops keep the panel over the window that it belongs to.
        return other != window() && other != &mWindow && other->isVisible() &&
               other->windowType() != Qt::Popup && other->frameGeometry().intersects(window()->frameGeometry());
    });
}

void DockWorkspaceFrame::TakeFocus() {
    if (!mView) return;
    BringToFront(true, false);
    TabViewImpl::Of(*mView).TakeFocus();
}

bool DockWorkspaceFrame::HasKeyboard() const {
    return mContent->isAncestorOf(QApplication::focusWidget());
}

void DockWorkspaceFrame::RequestClose() {
    QMetaObject::invokeMethod(
        this, [this] { mClose(); }, Qt::QueuedConnection);
}

void DockWorkspaceFrame::FillMenu(QMenu& menu) {
    const char* flyout = mView ? mView->GetFlyoutMenuID() : nullptr;
    if (flyout && MenuResources::Instance().HasMenu(flyout)) {
        MenuResources::Instance().Fill(menu, flyout);
        menu.addSeparator();
    }
    menu.addAction(isFloating() ? Localized("$$$/Desk/Workspace/DockPanel=Dock Panel")
                                : Localized("$$$/Desk/Workspace/UndockPanel=Undock Panel"),
                   this, [this] { ToggleFloating(); });
    menu.addAction(Localized("$$$/Desk/Workspace/ClosePanel=Close Panel"), this, [this] { RequestClose(); });
}

void DockWorkspaceFrame::ToggleFloating() {
    constexpr QPoint kStep(32, 32);  // Off the place it had, so that one sees it float.
    setFloating(!isFloating());
    if (isFloating()) move(pos() + kStep);
    TakeFocus();
}

void DockWorkspaceFrame::UpdateTab(bool isTabbed) {
    mTitleBar->SetTabbed(isTabbed);
    mTitleBar->SetOnDuty(mView && CommandRouter::Instance().GetViewOnDuty() == mView);
}

void DockWorkspaceFrame::closeEvent(QCloseEvent* event) {
    event->ignore();
    RequestClose();
}

void DockWorkspaceFrame::paintEvent(QPaintEvent* event) {
    QDockWidget::paintEvent(event);
    if (!isFloating()) return;
    QPainter painter(this);
    painter.setPen(Theme::Color(ThemeColor::Line));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace desk
