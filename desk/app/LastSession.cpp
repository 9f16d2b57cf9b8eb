#include "desk/app/LastSession.h"

#include <QJsonArray>
#include <QJsonObject>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/FileURI.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/names/RecordOwner.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/core/settings/Profile.h"
#include "host/files/FileException.h"

namespace desk {
namespace {

constexpr std::chrono::milliseconds kWriteDelay(500);
constexpr std::string_view kExtension = ".json";

constexpr QLatin1String kOwner("owner");
constexpr QLatin1String kTime("time");
constexpr QLatin1String kProduction("production");
constexpr QLatin1String kProjects("projects");
constexpr QLatin1String kActive("active");
constexpr QLatin1String kReopensAtStart("reopenAtStart");

QJsonObject ToJson(const OpenItems& items, const LockRecord& owner, std::int64_t time) {
    QJsonArray projects;
    for (const std::string& project : items.mProjects) projects.append(ToQStringFromUTF8(MakeFileURI(project)));
    QJsonObject object{{kOwner, WriteRecordOwner(owner)},
                       {kTime, static_cast<qint64>(time)},
                       {kProjects, projects},
                       {kActive, static_cast<qint64>(items.mActive)}};
    if (!items.mProduction.empty())
        object.insert(kProduction, ToQStringFromUTF8(MakeFileURI(items.mProduction)));
    return object;
}

OpenItems ReadItems(const QJsonObject& object) {
    OpenItems items;
    items.mProduction = ReadFileURI(ToUTF8(object.value(kProduction).toString()));
    const std::int64_t active = object.value(kActive).toInteger();
    std::int64_t index = 0;
    for (const QJsonValue& value : object.value(kProjects).toArray()) {
        std::string project = ReadFileURI(ToUTF8(value.toString()));
        const bool isActive = index++ == active;
        if (project.empty() || std::ranges::find(items.mProjects, project) != items.mProjects.end()) continue;
        if (isActive) items.mActive = items.mProjects.size();
        items.mProjects.push_back(std::move(project));
    }
    return items;
}

std::vector<std::string> ListRecords(const std::string& folder) {
    std::vector<std::string> paths;
    try {
        for (const FolderEntry& entry : GetServices().mFileSystem->ListFolder(folder))
            if (entry.mName.ends_with(kExtension) && !entry.mName.starts_with('.'))
                paths.push_back(folder + '/' + entry.mName);
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ENOENT) Log(LogLevel::Warning, exception.what());
    }
    return paths;
}

void RemoveRecord(const std::string& path) {
    try {
        GetServices().mFileSystem->RemoveFile(path);
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ENOENT) Log(LogLevel::Info, exception.what());
    }
}

std::int64_t Now() {
    const auto time = GetServices().mDesktop->Now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

void WriteRecord(const std::string& path, const QJsonObject& object) {
    try {
        MakePrivateFolder(path.substr(0, path.rfind('/')));
        WriteJsonFile(path, object);
    } catch (const std::exception& exception) {
        Log(LogLevel::Warning, std::string("The list of open projects is not saved: ") + exception.what());
    }
}

}  // namespace

LastSession::LastSession(const std::string& profile)
    : mFolder(profile + '/' + kFolderName),
      mSettingsPath(profile + '/' + kSettingsName),
      mOwner(MakeRecordOwner()) {
    mPath = mFolder + '/' + mOwner.mNonce + std::string(kExtension);
    ReadSettings();
    ReadEnded();
}

void LastSession::ReadSettings() {
    const SettingsFile file = ReadSettingsFile(mSettingsPath);
    mMayWriteSettings = file.mMayWrite;
    if (!file.mNotice.empty()) TellUser(file.mNotice);
    mReopensAtStart = file.mObject.value(kReopensAtStart).toBool(false);
}

void LastSession::ReadEnded() {
    for (const std::string& path : ListRecords(mFolder)) {
        const JsonFile file = ReadJsonFile(path);
        if (file.mState != JsonFile::State::Read) {
            Log(LogLevel::Warning, "The record of a session, " + path + ", is left out: " + file.mReason);
            continue;
        }
        const LockRecord owner = ReadRecordOwner(file.mObject.value(kOwner).toObject());
        if (FindOwnerStanding(owner, mFolder) != OwnerStanding::Gone) continue;
        mEnded.push_back({path, file.mObject.value(kTime).toInteger(), ReadItems(file.mObject)});
    }
    std::ranges::sort(mEnded, std::ranges::greater(), &Ended::mTime);
    // What had been closed when it ended is not offered, nor is what came before.
    if (!mEnded.empty() && mEnded.front().mItems.mProjects.empty()) RemoveEnded();
}

void LastSession::RemoveEnded() {
    for (const Ended& ended : mEnded) mTasks.Submit([path = ended.mPath] { RemoveRecord(path); });
    mEnded.clear();
}

const OpenItems& LastSession::Get() const {
    static const OpenItems kNothing;
    return mEnded.empty() ? kNothing : mEnded.front().mItems;
}

void LastSession::Forget() {
    if (mEnded.empty()) return;
    Write();
    mTasks.Submit([path = mEnded.front().mPath] { RemoveRecord(path); });
    mEnded.erase(mEnded.begin());
}

void LastSession::Update(OpenItems items) {
    if (items == mItems) return;
    mItems = std::move(items);
    mHadProjects = mHadProjects || !mItems.mProjects.empty();
    if (mHadProjects) WriteSoon();
}

/// Opening and closing come in bursts.
void LastSession::WriteSoon() {
    if (std::exchange(mIsWriteDue, true)) return;
    GetServices().mMainThread->PostDelayed(mLifetime.Guard([this] {
        if (mIsWriteDue) Write();
    }),
                                           kWriteDelay);
}

void LastSession::Write() {
    mIsWriteDue = false;
    if (!mHadProjects) return;
    mTasks.Submit([path = mPath, object = ToJson(mItems, mOwner, Now())] { WriteRecord(path, object); });
}

void LastSession::End() {
    if (!mHadProjects) return;
    RemoveEnded();
    if (mItems.mProjects.empty())
        mTasks.Submit([path = mPath] { RemoveRecord(path); });
    else
        Write();
    mIsWriteDue = false;
}

void LastSession::SetReopensAtStart(bool reopens) {
    mReopensAtStart = reopens;
    if (!mMayWriteSettings) return;
    mTasks.Submit([path = mSettingsPath, object = QJsonObject{{kReopensAtStart, reopens}}] {
        WriteRecord(path, object);
    });
}

}  // namespace desk
