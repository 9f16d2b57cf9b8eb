#include "desk/framework/DockWorkspace.h"

#include <QApplication>
#include <QJsonArray>
#include <QMainWindow>
#include <algorithm>

#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/PanelNavigation.h"
#include "desk/framework/PanelRegistry.h"
#include "host/core/Logging.h"
#include "host/framework/Handler.h"
#include "host/framework/TabView.h"

namespace desk {
namespace {

constexpr QLatin1String kDocks("docks");
constexpr QLatin1String kClosedPanels("closedPanels");
/// Those of the panels on demand that the user has opened.
constexpr QLatin1String kOpenPanels("openPanels");
/// Of the window's width, as long as the user has not chosen: a panel shows five columns without scrolling.
constexpr double kDefaultShare = 0.725;
/// So wide a panel shows them in a smaller window too, as long as this much is left beside it; in view units.
constexpr int kFiveColumns = 1046;
constexpr int kLeftBeside = 220;
/// Of a panel on demand, in view units.
constexpr int kDefaultHeight = 240;

DockWorkspace* sCurrent = nullptr;

}  // namespace

DockWorkspace::DockWorkspace(QMainWindow& window) : mWindow(window) {
    sCurrent = this;
    mWindow.setDockOptions(QMainWindow::AllowNestedDocks | QMainWindow::AllowTabbedDocks |
                           QMainWindow::GroupedDragging);
    mWindow.setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
    mWindow.setDocumentMode(true);
    connect(
        qApp, &QApplication::focusChanged, this, [this] { UpdateTabs(); }, Qt::QueuedConnection);
    PanelNavigation::Instance().mSelectPanel = [this](bool forward) { return SelectPanel(forward); };
    PanelNavigation::Instance().mCanSelectPanel = [this] {
        return std::count_if(mFrames.begin(), mFrames.end(), [](auto* frame) { return frame->IsShown(); }) > 1;
    };
}

DockWorkspace::~DockWorkspace() {
    DestroyPanels();
    PanelNavigation::Instance() = {};
    sCurrent = nullptr;
}

void DockWorkspace::OpenTab(const std::string& handlerID) {
    OpenForUser(host::UTF8to16(handlerID), true);
}

void DockWorkspace::OpenForUser(const host::UTF16String& handlerID, bool takeFocus) {
    OpenPanel(handlerID, takeFocus);
    mOpenedByUser.insert(handlerID);
}

void DockWorkspace::OpenPanel(const host::UTF16String& id, bool takeFocus) {
    host::Handler* handler = PanelRegistry::Instance().FindOrCreateHandler(id);
    if (!handler)
        return Log(LogLevel::Warning, "There is no panel \"" + host::UTF16to8(id) + "\" that could be opened");
    DockWorkspaceFrame& frame = FindOrMakeFrame(id);
    try {
        if (!frame.GetView()) handler->CreateTabViewSelf(&frame);
    } catch (...) {
        host::LogCurrentException(__PRETTY_FUNCTION__);
    }
    if (!frame.GetView()) return;
    if (takeFocus)
        frame.TakeFocus();
    else
        frame.GetView()->BringToFront(false, false);
    UpdateTabs();
}

host::TabView* DockWorkspace::FindFirstTabViewOfType(const host::UTF16String& handlerID) {
    const DockWorkspaceFrame* frame = FindFrame(handlerID);
    return frame && frame->IsShown() ? frame->GetView() : nullptr;
}

host::TabView* DockWorkspace::CreateOrReanimateTabView(const host::UTF16String& handlerID,
                                                       const host::PropertyList&) {
    OpenPanel(handlerID, false);
    return FindFirstTabViewOfType(handlerID);
}

bool DockWorkspace::ClosePanel(const host::UTF16String& handlerID) {
    DockWorkspaceFrame* frame = FindFrame(handlerID);
    host::Handler* handler = host::Handler::FindHandler(handlerID);
    if (!frame || !frame->IsShown()) return true;
    if (handler && !handler->AllowClose()) return false;
    mOpenedByUser.erase(handlerID);
    if (handler && !handler->ShouldDestroyWhenClosed())
        frame->Show(false);
    else
        DestroyPanel(*frame);
    UpdateTabs();
    return true;
}

void DockWorkspace::TogglePanel(const host::UTF16String& handlerID) {
    const DockWorkspaceFrame* frame = FindFrame(handlerID);
    if (frame && frame->IsInFront() && !frame->MayBeCovered())
        ClosePanel(handlerID);
    else
        OpenTab(host::UTF16to8(handlerID));
}

void DockWorkspace::DestroyPanel(DockWorkspaceFrame& frame) {
    if (host::TabView* view = frame.GetView()) view->Destroy();
    PanelRegistry::Instance().DestroyHandler(frame.GetHandlerID());
}

void DockWorkspace::DestroyPanels() {
    for (DockWorkspaceFrame* frame : mFrames) DestroyPanel(*frame);
}

DockWorkspaceFrame* DockWorkspace::FindFrame(const host::UTF16String& handlerID) const {
    for (DockWorkspaceFrame* frame : mFrames)
        if (frame->GetHandlerID() == handlerID) return frame;
    return nullptr;
}

DockWorkspaceFrame& DockWorkspace::FindOrMakeFrame(const host::UTF16String& handlerID) {
    if (DockWorkspaceFrame* frame = FindFrame(handlerID)) return *frame;
    auto* frame = new DockWorkspaceFrame(mWindow, handlerID, [this, handlerID] { ClosePanel(handlerID); });
    if (!mWindow.restoreDockWidget(frame)) AddDock(*frame);
    for (const auto signal : {&QDockWidget::visibilityChanged, &QDockWidget::topLevelChanged})
        connect(
            frame, signal, this, [this] { UpdateTabs(); }, Qt::QueuedConnection);
    connect(
        frame, &QDockWidget::dockLocationChanged, this, [this] { UpdateTabs(); }, Qt::QueuedConnection);
    mFrames.push_back(frame);
    return *frame;
}

void DockWorkspace::AddDock(DockWorkspaceFrame& frame) {
    if (!PanelRegistry::Instance().IsOnDemand(frame.GetHandlerID()))
        return mWindow.addDockWidget(Qt::LeftDockWidgetArea, &frame);
    mWindow.addDockWidget(Qt::BottomDockWidgetArea, &frame);
    mWindow.resizeDocks({&frame}, {kDefaultHeight}, Qt::Vertical);
}

void DockWorkspace::OpenPanels(const QJsonObject& layout) {
    const QJsonArray closed = layout.value(kClosedPanels).toArray();
    const QJsonArray open = layout.value(kOpenPanels).toArray();
    for (const host::UTF16String& id : PanelRegistry::Instance().GetHandlerIDs()) {
        const bool isOnDemand = PanelRegistry::Instance().IsOnDemand(id);
        const bool isClosed = isOnDemand ? !open.contains(ToQString(id)) : closed.contains(ToQString(id));
        // A handler announces its entry in the Window menu when it is made: that entry stays.
        if (isClosed && PanelRegistry::Instance().FindOrCreateHandler(id))
            PanelRegistry::Instance().DestroyHandler(id);
        else
            OpenForUser(id, !isOnDemand);
    }
    if (!layout.contains(kDocks)) return OpenByDefault();
    if (RestoreDocks(layout)) return;
    Log(LogLevel::Warning,
        "The saved arrangement of panels cannot be used; panels stand where they stand at first");
    OpenByDefault();
}

void DockWorkspace::OpenByDefault() {
    QList<QDockWidget*> docks;
    QList<int> widths;
    const int share = static_cast<int>(mWindow.width() * kDefaultShare);
    const int width = std::max(share, std::min(kFiveColumns, mWindow.width() - kLeftBeside));
    for (DockWorkspaceFrame* frame : mFrames) {
        if (!docks.isEmpty()) mWindow.tabifyDockWidget(docks.first(), frame);
        docks.append(frame);
        widths.append(width);
    }
    if (docks.isEmpty()) return;
    mWindow.resizeDocks(docks, widths, Qt::Horizontal);
    docks.first()->raise();
}

bool DockWorkspace::RestoreDocks(const QJsonObject& layout) {
    const QByteArray docks = QByteArray::fromBase64(layout.value(kDocks).toString().toLatin1());
    const bool isRestored = mWindow.restoreState(docks);
    for (DockWorkspaceFrame* frame : mFrames) {
        // The screens may be others by now.
        if (const std::optional<host::Rect> place = frame->FindFloatingRect()) frame->Float(*place);
        frame->Show(true);
    }
    return isRestored;
}

QJsonObject DockWorkspace::SaveLayout() const {
    QJsonArray closed;
    QJsonArray open;
    for (const host::UTF16String& id : PanelRegistry::Instance().GetHandlerIDs()) {
        const DockWorkspaceFrame* frame = FindFrame(id);
        const bool isOpen = frame && frame->IsShown();
        if (!isOpen) closed.append(ToQString(id));
        if (isOpen && PanelRegistry::Instance().IsOnDemand(id) && mOpenedByUser.contains(id))
            open.append(ToQString(id));
    }
    return {{kDocks, QString::fromLatin1(mWindow.saveState().toBase64())},
            {kClosedPanels, closed},
            {kOpenPanels, open}};
}

bool DockWorkspace::SelectPanel(bool forward) {
    std::vector<DockWorkspaceFrame*> shown;
    std::copy_if(mFrames.begin(), mFrames.end(), std::back_inserter(shown),
                 [](auto* frame) { return frame->IsShown(); });
    if (shown.size() < 2) return false;
    const auto isOnDuty = [](const auto* frame) {
        return frame->GetView() == CommandRouter::Instance().GetViewOnDuty();
    };
    auto from = std::ranges::find_if(shown, &DockWorkspaceFrame::HasKeyboard);
    if (from == shown.end()) from = std::ranges::find_if(shown, isOnDuty);
    const std::size_t count = shown.size();
    const std::size_t current =
        from == shown.end() ? (forward ? count - 1 : 0) : static_cast<std::size_t>(from - shown.begin());
    shown[(current + (forward ? 1 : count - 1)) % count]->TakeFocus();
    return true;
}

void DockWorkspace::UpdateTabs() {
    const auto isDocked = [](const QDockWidget* dock) { return !dock->isHidden() && !dock->isFloating(); };
    for (DockWorkspaceFrame* frame : mFrames) {
        const QList<QDockWidget*> others = mWindow.tabifiedDockWidgets(frame);
        frame->UpdateTab(isDocked(frame) && std::any_of(others.begin(), others.end(), isDocked));
    }
}

}  // namespace desk

namespace host {

WorkspaceFrame::~WorkspaceFrame() = default;

TopLevelWindow::~TopLevelWindow() = default;

Workspace::~Workspace() = default;

Workspace::Reference Workspace::Instance() {
    return Reference(desk::sCurrent);
}

bool WorkspaceUtils::TabIsShown(Workspace* workspace, const std::string& handlerID, bool frontmost) {
    const auto* docks = dynamic_cast<const desk::DockWorkspace*>(workspace);
    const desk::DockWorkspaceFrame* frame = docks ? docks->FindFrame(UTF8to16(handlerID)) : nullptr;
    return frame && (frontmost ? frame->IsInFront() : frame->IsShown());
}

}  // namespace host
