#include "desk/core/settings/DebugDatabaseFile.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {
namespace {

/// An editor empties a file before it writes it: read when it has come to rest.
constexpr std::chrono::milliseconds kRest{100};

ParsedDebugDatabase Numbers(const JsonFile& file) {
    ParsedDebugDatabase parsed;
    parsed.mEntries.emplace();
    for (auto it = file.mObject.begin(); it != file.mObject.end(); ++it) {
        const QJsonValue value = it.value();
        if (value.isDouble() && std::isfinite(value.toDouble()))
            parsed.mEntries->emplace(ToUTF8(it.key()), value.toDouble());
        else
            parsed.mIgnored.push_back(ToUTF8(it.key()));
    }
    return parsed;
}

/// Returns what is wrong with the file, a warning each.
std::vector<std::string> Apply(const std::string& path, const JsonFile& file) {
    if (file.mState == JsonFile::State::Broken || file.mState == JsonFile::State::Unreadable)
        return {"The debug database \"" + path + "\" was not read, its entries stay: " + file.mReason};
    ParsedDebugDatabase parsed = Numbers(file);
    std::vector<std::string> problems;
    for (const std::string& key : parsed.mIgnored)
        problems.push_back("The debug database \"" + path + "\": \"" + key +
                           "\" is ignored, it is not a number");
    SetDebugDatabaseEntries(std::move(*parsed.mEntries));
    return problems;
}

}  // namespace

ParsedDebugDatabase ParseDebugDatabase(std::string_view text) {
    const JsonFile file = ParseJsonObject(text);
    return file.mState == JsonFile::State::Read ? Numbers(file) : ParsedDebugDatabase{{}, file.mReason, {}};
}

/// Shared so that the tasks under way can hold it weakly.
struct DebugDatabaseFile::Watch : std::enable_shared_from_this<Watch> {
    std::string mPath;
    QString mFolder;
    QFileSystemWatcher mWatcher;
    bool mIsWaiting = false;
    /// Counts the readings begun: of two under way, the later one counts.
    unsigned mReading = 0;
    /// The profile changes often, and the file is read again each time: what is wrong with it is told once.
    std::vector<std::string> mProblems;

    void Begin();
    void AddPaths();
    void OnChanged();
    void Read();
    void Take(const JsonFile& file);
};

void DebugDatabaseFile::Watch::AddPaths() {
    // A file that was replaced is no longer watched, and one that is not there cannot be. The folder tells of
    // it.
    const QString file = ToQStringFromUTF8(mPath);
    if (!mWatcher.directories().contains(mFolder)) mWatcher.addPath(mFolder);
    if (!mWatcher.files().contains(file)) mWatcher.addPath(file);
}

void DebugDatabaseFile::Watch::Begin() {
    const auto changed = [this] { OnChanged(); };
    QObject::connect(&mWatcher, &QFileSystemWatcher::fileChanged, changed);
    QObject::connect(&mWatcher, &QFileSystemWatcher::directoryChanged, changed);
    AddPaths();
    Take(ReadJsonFile(mPath));
}

void DebugDatabaseFile::Watch::Take(const JsonFile& file) {
    std::vector<std::string> problems = Apply(mPath, file);
    if (problems == mProblems) return;
    mProblems = std::move(problems);
    for (const std::string& problem : mProblems) Log(LogLevel::Warning, problem);
}

void DebugDatabaseFile::Watch::OnChanged() {
    if (std::exchange(mIsWaiting, true)) return;
    GetServices().mMainThread->PostDelayed(
        [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->Read();
        },
        kRest);
}

void DebugDatabaseFile::Watch::Read() {
    mIsWaiting = false;
    AddPaths();
    GetServices().mWorkerPool->Submit([weak = weak_from_this(), path = mPath, reading = ++mReading] {
        GetServices().mMainThread->Post([weak, reading, file = ReadJsonFile(path)] {
            const auto self = weak.lock();
            if (self && self->mReading == reading) self->Take(file);
        });
    });
}

DebugDatabaseFile::DebugDatabaseFile(const std::string& profileFolder) : mWatch(std::make_shared<Watch>()) {
    mWatch->mPath = profileFolder + '/' + kFileName;
    mWatch->mFolder = ToQStringFromUTF8(profileFolder);
    mWatch->Begin();
}

DebugDatabaseFile::~DebugDatabaseFile() = default;

}  // namespace desk
