#include "desk/app/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QStatusTipEvent>
#include <algorithm>
#include <vector>

#include "desk/app/CopiesUnderWay.h"
#include "desk/app/KeyChoice.h"
#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectArea.h"
#include "desk/app/ProjectCommands.h"
#include "desk/app/RecentProductions.h"
#include "desk/app/RowEditing.h"
#include "desk/app/StatusLine.h"
#include "desk/app/WindowTitle.h"
#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/core/language/Localized.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/core/settings/Profile.h"
#include "desk/core/work/LongWork.h"
#include "desk/framework/MainCommander.h"
#include "desk/framework/MenuResources.h"
#include "desk/framework/PanelRegistry.h"
#include "desk/framework/Shortcuts.h"
#include "desk/framework/WindowPlacement.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/project/DocumentManager.h"

namespace desk {
namespace {

constexpr QSize kDefaultSize(1440, 820);
constexpr QLatin1String kGeometry("geometry");
constexpr QLatin1String kPanels("panels");
constexpr QLatin1String kDynamicEntry("dynamic");

}  // namespace

MainWindow::MainWindow(const Profile& profile, RecentProductions* recent, QSize size)
    : mProfile(profile),
      mRecent(recent),
      mStatusLine(std::make_unique<StatusLine>(*this)),
      mWorkspace(std::make_unique<DockWorkspace>(*this)),
      mProductions(std::make_unique<ProductionCommands>(*mStatusLine, recent)),
      mProjects(new ProjectArea(this)),
      mProjectCommands(std::make_unique<ProjectCommands>(*mProjects)),
      mCopies(std::make_unique<CopiesUnderWay>()),
      mKeyChoice(std::make_unique<KeyChoice>(profile)),
      mRowEditing(std::make_unique<RowEditing>()) {
    setCentralWidget(mProjects);
    mTitle = std::make_unique<WindowTitle>(*this, *mProjects);
    RegisterCommands();
    DeclareProgramCommands();
    MakeMenus();
    RestoreLayout(size);
    Shortcuts::Instance().InstallOn(*this);
    if (mRecent && !mRecent->GetNotice().empty()) mStatusLine->ShowNotice(ToDisplayText(mRecent->GetNotice()));
}

MainWindow::~MainWindow() {
    for (const int command : {kCommandQuit, kCommandAbout, kCommandShowPlaces})
        MainCommander::Instance().Register(command, {}, {});
    mProjects->disconnect(this);
    mTitle.reset();
    mRowEditing.reset();
    mKeyChoice.reset();
    mCopies.reset();
    mProjectCommands.reset();
    mProductions.reset();
    mWorkspace.reset();
    mStatusLine.reset();
}

void MainWindow::RegisterCommands() {
    const auto add = [](int command, auto action) {
        MainCommander::Instance().Register(command, {}, [action] {
            action();
            return true;
        });
    };
    add(kCommandQuit, [this] { close(); });
    add(kCommandAbout, [this] { ShowAbout(); });
    add(kCommandShowPlaces, [this] { ShowPlaces(); });
}

QMenu& MainWindow::AddMenu(const char* titleKey, const char* menuID) {
    QMenu& menu = *menuBar()->addMenu(Localized(titleKey));
    MenuResources::Instance().Fill(menu, menuID);
    menu.installEventFilter(this);
    return menu;
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
        QMetaObject::invokeMethod(this, &MainWindow::LeaveMenuBar, Qt::QueuedConnection);
    return QMainWindow::eventFilter(watched, event);
}

/// Qt would leave the keyboard with the menu bar, and the title of the menu that Escape has closed highlighted.
void MainWindow::LeaveMenuBar() {
    if (QApplication::activePopupWidget()) return;
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(menuBar(), &escape);
}

void MainWindow::MakeMenus() {
    AddMenu("$$$/Desk/Menus/File=&File", "ProductionDesk_File_Menu");
    AddMenu("$$$/Desk/Menus/Edit=&Edit", "ProductionDesk_Edit_Menu");
    QMenu& production = AddMenu("$$$/Desk/Menus/Production=&Production", "ProductionDesk_Production_Menu");
    QMenu* recent = production.addMenu(Localized("$$$/Desk/Menus/OpenRecent=Open &Recent"));
    connect(recent, &QMenu::aboutToShow, this, [this, recent] { mProductions->FillRecentMenu(*recent); });
    MenuResources::Instance().Fill(production, "ProductionDesk_OpenProduction_Menu");
    QMenu& windows = AddMenu("$$$/Desk/Menus/Window=&Window", "ProductionDesk_Window_Menu");
    connect(&windows, &QMenu::aboutToShow, this, [this, &windows] { FillWindowMenu(windows); });
    AddMenu("$$$/Desk/Menus/Help=&Help", "ProductionDesk_Help_Menu");
}

void MainWindow::FillWindowMenu(QMenu& menu) {
    for (QAction* action : menu.actions())
        if (action->data() == kDynamicEntry) delete action;
    QAction* const first = menu.actions().value(0);
    const auto insert = [&](QAction* action) {
        action->setData(QString(kDynamicEntry));
        menu.insertAction(first, action);
    };
    std::vector<PanelRegistry::WindowEntry> entries = PanelRegistry::Instance().GetWindowEntries();
    std::ranges::stable_partition(entries, [](const PanelRegistry::WindowEntry& entry) {
        return !PanelRegistry::Instance().IsOnDemand(entry.mHandlerID);
    });
    for (const PanelRegistry::WindowEntry& entry : entries) {
        auto* action =
            new QAction(ToDisplayText(entry.mTitle).replace(QLatin1Char('&'), QLatin1String("&&")), &menu);
        const DockWorkspaceFrame* frame = mWorkspace->FindFrame(entry.mHandlerID);
        action->setCheckable(true);
        action->setChecked(frame && frame->IsShown());
        connect(action, &QAction::triggered, this,
                [this, id = entry.mHandlerID] { mWorkspace->TogglePanel(id); });
        insert(action);
    }
    auto* separator = new QAction(&menu);
    separator->setSeparator(true);
    insert(separator);
}

void MainWindow::RestoreLayout(QSize size) {
    const SettingsFile file = mRecent ? ReadSettingsFile(mProfile.PathOf(kLayoutFileName)) : SettingsFile{};
    mMayWriteLayout = file.mMayWrite;
    if (!file.mNotice.empty()) mStatusLine->ShowNotice(ToDisplayText(file.mNotice));
    resize(kDefaultSize);
    if (file.mObject.contains(kGeometry) &&
        !restoreGeometry(QByteArray::fromBase64(file.mObject.value(kGeometry).toString().toLatin1())))
        Log(LogLevel::Warning, "The saved place of the window cannot be used");
    // A picture is taken of a window on no screen.
    if (mRecent) FitOnScreen(*this);
    if (size.isValid()) resize(size);
    mWorkspace->OpenPanels(file.mObject.value(kPanels).toObject());
}

void MainWindow::SaveLayout() const {
    if (!mRecent || !mMayWriteLayout) return;
    try {
        WriteJsonFile(
            mProfile.PathOf(kLayoutFileName),
            {{kGeometry, QString::fromLatin1(saveGeometry().toBase64())}, {kPanels, mWorkspace->SaveLayout()}});
    } catch (const std::exception& exception) {
        Log(LogLevel::Warning, std::string("The window's layout is not saved: ") + exception.what());
    }
}

bool MainWindow::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip || !mStatusLine) return QMainWindow::event(event);
    mStatusLine->SetTip(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

/// Who comes back to the window may find that another has taken or given up a lock.
void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && mProjectCommands)
        mProjects->UpdateHolders();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (mIsClosing || IsLongWorkRunning()) return;
    mIsClosing = true;
    host::DocumentManager* manager = host::DocumentManager::Instance();
    const bool isDone = CopiesUnderWay::MayBeCancelled() && (!manager || manager->CloseAllProjects());
    mIsClosing = isDone;
    if (!isDone) return;
    event->accept();
    QCoreApplication::exit();
}

/// Qt would offer the docks here, and hide them past the workspace.
QMenu* MainWindow::createPopupMenu() {
    return nullptr;
}

void MainWindow::ShowAbout() {
    GetServices().mDialogs->ShowMessage(
        host::ZString("$$$/Desk/About/Title=About Production Desk"),
        host::ZString(
            "$$$/Desk/About/Text=Production Desk @0\nShows a production's folders and projects, and who "
            "works on what.",
            {host::AsciiToUTF16(ZU_VERSION)}),
        MessageKind::Information);
}

void MainWindow::ShowPlaces() {
    const auto shown = [](const std::string& path) { return ToUTF16(ToDisplayText(host::UTF8to16(path))); };
    GetServices().mDialogs->ShowMessage(
        host::ZString("$$$/Desk/Places/Title=Settings and Log"),
        host::ZString("$$$/Desk/Places/Text=Settings: @0\nLog: @1\nYour panels: @2",
                      {shown(mProfile.Folder()), shown(mProfile.PathOf("log.txt")),
                       shown(Profile::UserDataFolder() + "/plugins")}),
        MessageKind::Information);
}

}  // namespace desk
