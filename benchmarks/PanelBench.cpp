#include "benchmarks/PanelBench.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <functional>
#include <stdexcept>

#include "benchmarks/BenchApplication.h"
#include "desk/app/MainWindow.h"
#include "desk/app/ProgramCommands.h"
#include "desk/core/edges/QtMainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/edges/SystemDesktop.h"
#include "desk/core/settings/Profile.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/dialogs/QtDialogs.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/files/live/ChangeSource.h"
#include "desk/files/live/FolderStore.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/MenuResources.h"
#include "desk/framework/PluginLoader.h"
#include "desk/framework/Shortcuts.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/toolkit/Theme.h"
#include "host/framework/CommandIdentifiers.h"

namespace bench {

/// What the program's session sets up.
struct PanelBench::Program {
    explicit Program(const std::string& profileFolder) : mDesktop(u"bench"), mProfile(profileFolder) {
        mServices = {&mFileSystem, &mMainThread, &mDialogs, &mDesktop, &mWorkerPool, nullptr};
        desk::GetServices() = mServices;
        mFolderStore = desk::CreateFolderStore(desk::SweepInBackground);
        desk::GetServices().mFolderStore = mFolderStore.get();
        desk::MenuResources::Instance().Load(profileFolder);
        desk::Shortcuts::Instance().Load(profileFolder);
    }
    ~Program() {
        mWindow.reset();
        mWorkerPool.WaitUntilIdle(std::chrono::seconds(10));
        mFolderStore.reset();
        desk::GetServices() = {};
    }

    desk::SystemDesktop mDesktop;
    desk::PosixFileSystem mFileSystem;
    desk::QtMainThread mMainThread;
    desk::WorkerPool mWorkerPool{desk::WorkerPool::kThreads};
    desk::QtDialogs mDialogs;
    desk::Services mServices;
    desk::Profile mProfile;
    std::unique_ptr<desk::FolderStore> mFolderStore;
    std::unique_ptr<desk::MainWindow> mWindow;
};

PanelBench::PanelBench() : mProgram(std::make_unique<Program>(mProfileFolder.path().toStdString())) {
    LoadPanel();
    mProgram->mWindow = std::make_unique<desk::MainWindow>(mProgram->mProfile, nullptr, kWindowSize);
    mProgram->mWindow->show();
    BenchApplication::Instance().RunFor(std::chrono::milliseconds(300));
    FindWidgets();
}

PanelBench::~PanelBench() {
    Close();
}

void PanelBench::LoadPanel() {
    auto plugins = desk::FindPlugins({ZU_PLUGIN_FOLDER});
    desk::LoadPlugins(plugins);
    for (const auto& plugin : plugins) {
        if (plugin.mRefusal.empty()) return;
        throw std::runtime_error(plugin.mPath + ": " + plugin.mRefusal);
    }
    throw std::runtime_error("no panel in " ZU_PLUGIN_FOLDER);
}

/// The tree that shows is the directory view's; the other one is the search results'.
void PanelBench::FindWidgets() {
    for (auto* view : mProgram->mWindow->findChildren<QTreeView*>())
        (view->isVisible() ? mView : mSearchView) = view;
    mSearchField = mProgram->mWindow->findChild<QLineEdit*>();
    if (!mView || !mSearchView || !mSearchField) throw std::runtime_error("the panel's widgets are not there");
}

void PanelBench::Open(const std::string& folder) {
    mProgram->mWindow->Productions().OpenAtStart(folder, {});
}

void PanelBench::Close() {
    Send(desk::kCommandCloseProduction);
    BenchApplication::Instance().RunFor(std::chrono::milliseconds(50));
}

/// As a user does it: what was open when the production was closed is open again when it is opened.
void PanelBench::PrepareFolders(const std::string& folder, int rows) {
    auto& application = BenchApplication::Instance();
    // No rows come any more for two seconds.
    const auto waitForAll = [&] {
        for (int still = 0, shown = 0; still < 20 && CountShownRows(*mView) < rows; ++still) {
            application.RunFor(std::chrono::milliseconds(100));
            if (const int now = CountShownRows(*mView); now != shown) still = 0, shown = now;
        }
    };
    Open(folder);
    waitForAll();
    const int topLevelRows = mView->model()->rowCount();
    for (int row = 0; row < topLevelRows && CountShownRows(*mView) < rows; ++row) {
        mView->setCurrentIndex(mView->model()->index(row, 0));
        QKeyEvent star(QEvent::KeyPress, Qt::Key_Asterisk, Qt::NoModifier, QStringLiteral("*"));
        QCoreApplication::sendEvent(mView, &star);
        waitForAll();
    }
    application.RunFor(std::chrono::milliseconds(500));
    Close();
    application.RunFor(std::chrono::milliseconds(2000));
}

void PanelBench::Zoom(int steps) {
    for (; steps > 0; --steps) Send(host::CommandID::kZoomIn);
    for (; steps < 0; ++steps) Send(host::CommandID::kZoomOut);
}

void PanelBench::SelectAll() {
    Send(host::CommandID::kSelectAll);
}

void PanelBench::Search(const QString& text) {
    mSearchField->setText(text);
}

void PanelBench::Send(int command) {
    desk::CommandRouter::Instance().Send(command);
}

}  // namespace bench
