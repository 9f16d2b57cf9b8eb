#include "desk/core/edges/FileBrowser.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <algorithm>
#include <atomic>

#include "desk/core/edges/FileURI.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {
namespace {

constexpr QLatin1String kService("org.freedesktop.FileManager1");
constexpr QLatin1String kPath("/org/freedesktop/FileManager1");
constexpr QLatin1String kOpener("xdg-open");
/// A file browser that has to be started first takes its time.
constexpr int kAnswerLimit = 25'000;

QStringList MakeURIs(const std::vector<std::string>& paths) {
    QStringList uris;
    for (const std::string& path : paths) uris << QString::fromLatin1(MakeFileURI(path).c_str());
    return uris;
}

/// A connection to the session bus for one question.
class BusConnection {
public:
    BusConnection() : mBus(Connect(mName)) {}
    ~BusConnection() { QDBusConnection::disconnectFromBus(mName); }

    QDBusMessage Call(const QDBusMessage& call) const { return mBus.call(call, QDBus::Block, kAnswerLimit); }

private:
    static QDBusConnection Connect(const QString& name) {
        const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
        return address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
                                 : QDBusConnection::connectToBus(address, name);
    }
    static QString MakeName() {
        static std::atomic<int> sCount = 0;
        return QStringLiteral("file-browser-%1").arg(++sCount);
    }

    const QString mName = MakeName();
    QDBusConnection mBus;
};

/// Empty when the file browser has taken it on, else why not. Waits for the bus.
QString AskFileManager(const QStringList& uris, Desktop::Reveal reveal) {
    const QLatin1String method(reveal == Desktop::Reveal::Folders ? "ShowFolders" : "ShowItems");
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kService, method);
    call << uris << QString();
    const QDBusMessage answer = BusConnection().Call(call);
    if (answer.type() == QDBusMessage::ReplyMessage) return {};
    return answer.errorMessage().isEmpty() ? QStringLiteral("no answer") : answer.errorMessage();
}

std::vector<std::string> FindFolders(const std::vector<std::string>& paths, Desktop::Reveal reveal) {
    std::vector<std::string> folders;
    for (const std::string& path : paths) {
        const std::size_t end = path.rfind('/');
        const bool isFolder = reveal == Desktop::Reveal::Folders || end == std::string::npos;
        const std::string folder = isFolder ? path : path.substr(0, std::max<std::size_t>(end, 1));
        if (std::ranges::find(folders, folder) == folders.end()) folders.push_back(folder);
    }
    return folders;
}

/// The process is left to itself: it may be the file browser, and live longer than the program.
void OpenFolder(const std::string& folder, const Desktop::RevealFailed& failed) {
    auto* process = new QProcess;
    const auto tell = [process, folder, failed](const QString& reason) {
        process->deleteLater();
        if (reason.isEmpty()) return;
        Log(LogLevel::Warning, "open " + folder + " with " + ToUTF8(kOpener + QLatin1String(": ") + reason));
        failed(folder);
    };
    QObject::connect(process, &QProcess::errorOccurred, process, [process, tell](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) tell(process->errorString());
    });
    QObject::connect(process, &QProcess::finished, process, [tell](int exitCode, QProcess::ExitStatus status) {
        const bool isFine = status == QProcess::NormalExit && exitCode == 0;
        tell(isFine ? QString() : QStringLiteral("exit code %1").arg(exitCode));
    });
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(kOpener, {QString::fromLatin1(MakeFileURI(folder).c_str())});
}

}  // namespace

void ShowInFileBrowser(const std::vector<std::string>& paths, Desktop::Reveal reveal,
                       Desktop::RevealFailed failed) {
    if (paths.empty()) return;
    GetServices().mWorkerPool->Submit([paths, reveal, failed = std::move(failed)] {
        const QString problem = AskFileManager(MakeURIs(paths), reveal);
        if (problem.isEmpty()) return;
        Log(LogLevel::Info, "No file browser shows items over the session bus: " + ToUTF8(problem));
        GetServices().mMainThread->Post([folders = FindFolders(paths, reveal), failed] {
            for (const std::string& folder : folders) OpenFolder(folder, failed);
        });
    });
}

}  // namespace desk
