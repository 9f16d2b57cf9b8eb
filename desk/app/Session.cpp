#include "desk/app/Session.h"

#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QApplication>
#include <QDialog>
#include <QLibraryInfo>
#include <QLocale>
#include <QSocketNotifier>
#include <QTimer>
#include <QTranslator>
#include <cstdio>
#include <optional>
#include <thread>

#include "desk/app/CommandLine.h"
#include "desk/app/MainWindow.h"
#include "desk/app/PluginFolders.h"
#include "desk/app/ProgressPanel.h"
#include "desk/app/RecentProductions.h"
#include "desk/app/Screenshot.h"
#include "desk/app/SessionMemory.h"
#include "desk/app/SystemColorScheme.h"
#include "desk/core/edges/QtMainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/edges/SystemDesktop.h"
#include "desk/core/language/DateLanguage.h"
#include "desk/core/language/LanguageTable.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UsageLogFile.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/DebugDatabaseFile.h"
#include "desk/core/settings/Directories.h"
#include "desk/core/settings/Profile.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/dialogs/QtDialogs.h"
#include "desk/files/live/ChangeSource.h"
#include "desk/files/live/FolderStore.h"
#include "desk/framework/MenuResources.h"
#include "desk/framework/PluginLoader.h"
#include "desk/framework/Shortcuts.h"
#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/project/production/CopyQueue.h"
#include "host/core/DirectoryRegistry.h"

namespace desk {
namespace {

/// Longer than any pace at which changes and facts are handed on.
constexpr std::chrono::milliseconds kLongestPause(60);
constexpr std::chrono::seconds kClosingPatience(3);
/// While a copy ends and what it has made is removed.
constexpr std::chrono::seconds kClosingPatienceWithCopies(10);
constexpr std::chrono::milliseconds kBetweenTries(100);
/// For what follows when all locks have been given up, or time is over for that.
constexpr std::chrono::milliseconds kReserve(200);

/// While Qt looks for the display: it would end the process with its own words and a core dump.
void ExplainMissingDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg) return;
    std::fprintf(stderr, "production-desk: %s\n", kNoDisplay);
    _exit(2);
}

/// What Qt says goes to the log, but for what a display that is none has to say about itself.
void LogQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (text.startsWith(QLatin1String("This plugin does not support"))) return;
    Log(type == QtCriticalMsg || type == QtFatalMsg ? LogLevel::Error : LogLevel::Info, "Qt: " + ToUTF8(text));
}

/// Qt's own arguments are none of the command line's.
std::unique_ptr<QApplication> MakeApplication(int& argumentCount, char** arguments) {
    qInstallMessageHandler(ExplainMissingDisplay);
    auto application = std::make_unique<QApplication>(argumentCount, arguments);
    qInstallMessageHandler(LogQtMessage);
    QApplication::setApplicationName(QStringLiteral("production-desk"));
    QApplication::setApplicationDisplayName(QStringLiteral("Production Desk"));
    QApplication::setApplicationVersion(QStringLiteral(ZU_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("production-desk"));
    QApplication::setQuitOnLastWindowClosed(
        false);  // The main window's end counts, and closes no floating panels.
    return application;
}

/// Qt's own texts, those of file dialogs above all, where its translations are installed.
void TranslateQt(const std::string& language) {
    auto* translator = new QTranslator(qApp);
    if (translator->load(QLocale(ToQStringFromUTF8(language)), QStringLiteral("qtbase"), QStringLiteral("_"),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(translator);
}

int sSignalEvent = -1;

void WakeForSignal(int) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(sSignalEvent, &one, sizeof one);
}

/// What is being read or written is finished first; what is being told or asked is cancelled, by its Escape
/// key's way out.
void CloseWhenIdle(MainWindow& window) {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!IsLongWorkRunning() && !dialog) return void(window.close());
    if (!IsLongWorkRunning()) dialog->reject();
    QTimer::singleShot(kBetweenTries, &window, [&window] { CloseWhenIdle(window); });
}

/// The session's end and an interrupt close the program as the user would: with the questions that this takes.
std::unique_ptr<QSocketNotifier> QuitOnSignals(MainWindow& window) {
    sSignalEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    auto notifier = std::make_unique<QSocketNotifier>(sSignalEvent, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, &window, [&window] {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = read(sSignalEvent, &count, sizeof count);
        CloseWhenIdle(window);
    });
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) signal(number, WakeForSignal);
    return notifier;
}

/// Everything that matters is saved by now: a volume that does not answer must not keep the process.
void EndAtTheLatestIn(std::chrono::seconds patience, int exitCode) {
    std::thread([=] {
        std::this_thread::sleep_for(patience);
        _exit(exitCode);
    }).detach();
}

}  // namespace

/// In the order in which they are made.
struct Session::Parts {
    explicit Parts(const CommandLine& commandLine) : mDesktop(ToUTF16(commandLine.mUser)) {}

    SystemDesktop mDesktop;
    QtMainThread mMainThread;
    WorkerPool mWorkerPool{WorkerPool::kThreads};
    QtDialogs mDialogs;
    std::unique_ptr<FolderStore> mFolderStore;
    std::unique_ptr<CopyQueue> mCopyQueue;
    std::optional<Profile> mProfile;
    std::unique_ptr<UsageLogFile> mUsageLog;
    std::unique_ptr<DebugDatabaseFile> mDebugDatabase;
    std::unique_ptr<RecentProductions> mRecent;
    std::unique_ptr<SystemColorScheme> mColorScheme;
    std::unique_ptr<ProjectDocuments> mDocuments;
    std::unique_ptr<MainWindow> mWindow;
    /// Null for a picture.
    std::unique_ptr<SessionMemory> mMemory;
    std::unique_ptr<Screenshot> mScreenshot;
    std::unique_ptr<QSocketNotifier> mSignals;
};

int Session::Run(const CommandLine& commandLine, FileSystem& fileSystem, int argumentCount, char** arguments) {
    int ownName = argumentCount > 0 ? 1 : 0;
    const std::unique_ptr<QApplication> application = MakeApplication(ownName, arguments);
    Session session(commandLine, fileSystem);
    try {
        return session.Execute();
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "production-desk: %s\n",
                     ToUTF8(ToDisplayText(host::UTF8to16(exception.what()))).c_str());
        return EXIT_FAILURE;
    }
}

Session::Session(const CommandLine& commandLine, FileSystem& fileSystem)
    : mCommandLine(commandLine), mParts(std::make_unique<Parts>(commandLine)) {
    Services& services = GetServices();
    services.mFileSystem = &fileSystem;
    services.mMainThread = &mParts->mMainThread;
    services.mDialogs = &mParts->mDialogs;
    services.mDesktop = &mParts->mDesktop;
    services.mWorkerPool = &mParts->mWorkerPool;
    mParts->mFolderStore = CreateFolderStore(SweepInBackground);
    services.mFolderStore = mParts->mFolderStore.get();
    mParts->mCopyQueue = std::make_unique<CopyQueue>();
}

Session::~Session() {
    mParts.reset();
    GetServices() = {};
}

int Session::Execute() {
    OpenProfile();
    ApplyTheme();
    LoadPanels();
    OpenWindow();
    mParts->mSignals = QuitOnSignals(*mParts->mWindow);
    const int exitCode = QApplication::exec();
    mParts->mWindow->SaveLayout();
    if (mParts->mMemory) mParts->mMemory->End();
    const std::chrono::seconds patience =
        mParts->mCopyQueue->IsBusy() ? kClosingPatienceWithCopies : kClosingPatience;
    const auto end = std::chrono::steady_clock::now() + patience;
    EndAtTheLatestIn(patience, exitCode);
    Close(end);
    return exitCode;
}

void Session::OpenProfile() {
    const Profile& profile = mParts->mProfile.emplace(mCommandLine.mProfile);
    OpenLogFile(profile.PathOf("log.txt"));
    // A picture remembers nothing, and shows what is nobody's.
    if (mCommandLine.mScreenshot.empty())
        RegisterDirectory(host::DirectoryRegistry::kUserProfile, host::UTF8to16(profile.Folder()));
    const std::string language = SetLanguage(ToUTF8(mCommandLine.mLanguage), profile.Folder());
    TranslateQt(language);
    if (!mCommandLine.mLanguage.isEmpty()) SetDateLanguage(language);
    mParts->mUsageLog = std::make_unique<UsageLogFile>(profile.PathOf(UsageLogFile::kFileName));
    mParts->mDebugDatabase = std::make_unique<DebugDatabaseFile>(profile.Folder());
    mParts->mRecent = std::make_unique<RecentProductions>(profile.PathOf(RecentProductions::kFileName));
    MenuResources::Instance().Load(profile.Folder());
    Shortcuts::Instance().Load(profile.Folder());
}

void Session::LoadPanels() {
    std::vector<PluginFile> plugins = FindPlugins(GetPluginFolders(mCommandLine.mPluginFolders));
    LoadPlugins(plugins);
    RegisterProgressPanel();
}

void Session::ApplyTheme() {
    ThemeKind kind =
        mCommandLine.mTheme == CommandLine::ThemeChoice::Light ? ThemeKind::Light : ThemeKind::Dark;
    if (mCommandLine.mTheme == CommandLine::ThemeChoice::System) {
        mParts->mColorScheme =
            std::make_unique<SystemColorScheme>([](ThemeKind changed) { Theme::Apply(changed); });
        kind = mParts->mColorScheme->Current();
    }
    Theme::Apply(kind);
}

void Session::OpenWindow() {
    const bool isPicture = !mCommandLine.mScreenshot.empty();
    mParts->mDocuments = std::make_unique<ProjectDocuments>();
    mParts->mWindow = std::make_unique<MainWindow>(
        *mParts->mProfile, isPicture ? nullptr : mParts->mRecent.get(), mCommandLine.mWindowSize);
    if (!isPicture) mParts->mMemory = std::make_unique<SessionMemory>(*mParts->mProfile, *mParts->mWindow);
    mParts->mWindow->show();
    mParts->mWindow->activateWindow();
    if (mParts->mMemory) mParts->mMemory->OfferUnsavedText();
    OpenFirstProduction();
}

void Session::OpenFirstProduction() {
    const bool isPicture = !mCommandLine.mScreenshot.empty();
    const OpenItems items =
        mParts->mMemory ? mParts->mMemory->FindItemsForStart(mCommandLine.mFolder) : OpenItems();
    const bool isReopening = !items.mProjects.empty();
    const auto done = [=, this](const ProductionOpener::Result& result) {
        if (isReopening && !result.mIsSuperseded) mParts->mMemory->ReopenProjects();
        OpenProjects();
        if (!isPicture || result.mProblem.isEmpty()) return;
        std::fprintf(stderr, "production-desk: %s\n", ToUTF8(result.mProblem).c_str());
        QCoreApplication::exit(EXIT_FAILURE);
    };
    ProductionCommands& productions = mParts->mWindow->Productions();
    const std::string last = isReopening ? items.mProduction : mParts->mRecent->GetFolderToOpen();
    if (!mCommandLine.mFolder.empty())
        productions.OpenAtStart(mCommandLine.mFolder, done);
    else if (!last.empty())
        productions.OpenAtStart(last, done);
    else if (mParts->mRecent->IsFirstStart())
        productions.OpenSample(done);
    else
        done({});
    if (isPicture) TakeScreenshot();
}

/// Those of the command line.
void Session::OpenProjects() {
    for (const std::string& project : mCommandLine.mProjects)
        mParts->mDocuments->OpenProject(host::UTF8to16(project));
}

void Session::TakeScreenshot() {
    const auto isOpening = [this] { return mParts->mWindow->Productions().IsOpening(); };
    const auto isIdle = [this] { return mParts->mMainThread.IsIdleFor(kLongestPause); };
    const auto done = [](const std::string& error) {
        if (!error.empty()) std::fprintf(stderr, "production-desk: %s\n", error.c_str());
        QCoreApplication::exit(error.empty() ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    mParts->mScreenshot =
        std::make_unique<Screenshot>(*mParts->mWindow, mCommandLine.mScreenshot, isOpening, isIdle, done);
}

/// Copies end at their next step, and remove what they have made, while the panels go, which use everything
/// else.
void Session::Close(std::chrono::steady_clock::time_point end) {
    using std::chrono::milliseconds;
    const auto left = [end](milliseconds reserve) {
        const auto time = end - reserve - std::chrono::steady_clock::now();
        return std::max(std::chrono::duration_cast<milliseconds>(time), milliseconds(0));
    };
    mParts->mCopyQueue.reset();
    mParts->mScreenshot.reset();
    mParts->mMemory.reset();
    mParts->mWindow.reset();
    mParts->mDocuments.reset();
    mParts->mColorScheme.reset();
    mParts->mDebugDatabase.reset();
    mParts->mUsageLog.reset();
    LockKeeper::Instance().FinishGivingUp(left(kReserve));
    mParts->mWorkerPool.WaitUntilIdle(left({}));
    mParts->mFolderStore.reset();
}

}  // namespace desk
