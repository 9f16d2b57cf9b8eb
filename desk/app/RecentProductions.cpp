#include "desk/app/RecentProductions.h"

#include <QJsonArray>
#include <QJsonObject>
#include <algorithm>
#include <exception>

#include "desk/core/edges/FileURI.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"

namespace desk {
namespace {

constexpr QLatin1String kProductions("productions");
constexpr QLatin1String kOpenAtStart("openAtStart");

}  // namespace

RecentProductions::RecentProductions(std::string path) : mPath(std::move(path)) {
    Read();
}

void RecentProductions::Read() {
    const SettingsFile file = ReadSettingsFile(mPath);
    mMayWrite = file.mMayWrite;
    if (!file.mNotice.empty()) mNotice = file.mNotice;
    if (!mMayWrite) return;
    mOpenAtStart = file.mObject.value(kOpenAtStart).toBool(true);
    mFolders.clear();
    for (const QJsonValue& value : file.mObject.value(kProductions).toArray()) {
        std::string folder = ReadFileURI(ToUTF8(value.toString()));
        const bool isNew = std::find(mFolders.begin(), mFolders.end(), folder) == mFolders.end();
        if (!folder.empty() && isNew && mFolders.size() < kLimit) mFolders.push_back(std::move(folder));
    }
}

void RecentProductions::Write() const {
    if (!mMayWrite)
        return Log(LogLevel::Warning,
                   "The list of recent productions is not saved: " + host::UTF16to8(mNotice));
    QJsonArray productions;
    for (const std::string& folder : mFolders) productions.append(ToQStringFromUTF8(MakeFileURI(folder)));
    try {
        WriteJsonFile(mPath, {{kProductions, productions}, {kOpenAtStart, mOpenAtStart}});
    } catch (const std::exception& exception) {
        Log(LogLevel::Warning, std::string("The list of recent productions is not saved: ") + exception.what());
    }
}

void RecentProductions::Add(const std::string& folder) {
    Read();  // Another window may have added to it.
    std::erase(mFolders, folder);
    mFolders.insert(mFolders.begin(), folder);
    if (mFolders.size() > kLimit) mFolders.resize(kLimit);
    mOpenAtStart = true;
    Write();
}

void RecentProductions::Remove(const std::string& folder) {
    Read();
    if (std::erase(mFolders, folder) > 0) Write();
}

void RecentProductions::ForgetFolderToOpen() {
    Read();
    mOpenAtStart = false;
    Write();
}

}  // namespace desk
