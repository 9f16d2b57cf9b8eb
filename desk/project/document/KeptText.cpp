#include "desk/project/document/KeptText.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cerrno>
#include <mutex>
#include <set>
#include <tuple>

#include "desk/core/durable/Presence.h"
#include "desk/core/durable/ReplaceFile.h"
#include "desk/core/durable/VolumeMove.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileURI.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/core/settings/Profile.h"
#include "desk/project/document/ProfileLeftovers.h"
#include "host/core/Localizer.h"

namespace desk {

namespace {

constexpr std::string_view kExtension = ".unsaved";
constexpr int kVersion = 1;
/// Of the first line, which is mostly a path and names.
constexpr std::size_t kLongestHead = 64 * 1024;

constexpr QLatin1String kVersionKey("version");
constexpr QLatin1String kProjectKey("project");
constexpr QLatin1String kTimeKey("time");
constexpr QLatin1String kOwnerKey("owner");
constexpr QLatin1String kBaseKey("base");
constexpr QLatin1String kTextKey("text");
constexpr QLatin1String kSizeKey("size");
constexpr QLatin1String kDigestKey("sha256");

QJsonObject ToJson(const ContentMark& mark) {
    return {{kSizeKey, static_cast<qint64>(mark.mSize)}, {kDigestKey, ToQStringFromUTF8(mark.mDigest)}};
}

ContentMark ReadMark(const QJsonValue& value) {
    const QJsonObject object = value.toObject();
    return {static_cast<std::uint64_t>(object.value(kSizeKey).toInteger()),
            ToUTF8(object.value(kDigestKey).toString())};
}

/// The names of the files in `folder`.
std::vector<std::string> ListNames(const std::string& folder) {
    std::vector<std::string> names;
    try {
        for (FolderEntry& entry : GetServices().mFileSystem->ListFolder(folder))
            names.push_back(std::move(entry.mName));
    } catch (const host::FileException& exception) {
        if (!IsAbsence(exception.SystemError())) throw;
    }
    return names;
}

/// Once for each file.
void TellDamaged(const std::string& path) {
    static std::mutex sMutex;
    static std::set<std::string> sTold;
    const std::lock_guard lock(sMutex);
    if (!sTold.insert(path).second) return;
    Log(LogLevel::Warning, "The unsaved text in " + path + " is damaged, and is left as it is");
    TellUser(host::ZString(
        "$$$/Desk/Recovery/Damaged=Unsaved text was kept in “@0”, but is damaged. The file is left "
        "as it is.",
        {host::UTF8to16(path)}));
}

std::optional<KeptTextFile> ReadFile(const std::string& path) {
    try {
        std::optional<KeptText> text = KeptTexts::Read(path);
        if (!text) return {};
        text->mBytes.clear();
        text->mBytes.shrink_to_fit();
        return KeptTextFile{path, FindOwnerStanding(text->mOwner, FolderOf(path)), *std::move(text)};
    } catch (const host::FileException& exception) {
        Log(LogLevel::Warning, exception.what());
        return {};
    }
}

}  // namespace

ContentMark MarkContent(std::string_view bytes) {
    const QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    return {bytes.size(), QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex().toStdString()};
}

std::string WriteKeptText(const KeptText& text) {
    const QJsonObject head{{kVersionKey, kVersion},
                           {kProjectKey, ToQStringFromUTF8(MakeFileURI(host::UTF16to8(text.mProject)))},
                           {kTimeKey, ToTimeText(text.mTime)},
                           {kOwnerKey, WriteRecordOwner(text.mOwner)},
                           {kBaseKey, ToJson(text.mBase)},
                           {kTextKey, ToJson(MarkContent(text.mBytes))}};
    return QJsonDocument(head).toJson(QJsonDocument::Compact).toStdString() + '\n' + text.mBytes;
}

std::optional<KeptText> ParseKeptText(std::string bytes) {
    const std::size_t end = std::string_view(bytes).substr(0, kLongestHead).find('\n');
    if (end == std::string::npos) return {};
    const JsonFile head = ParseJsonObject(std::string_view(bytes).substr(0, end));
    if (head.mState != JsonFile::State::Read || head.mObject.value(kVersionKey).toInt() != kVersion) return {};
    KeptText text;
    text.mProject = host::UTF8to16(ReadFileURI(ToUTF8(head.mObject.value(kProjectKey).toString())));
    const QDateTime time = QDateTime::fromString(head.mObject.value(kTimeKey).toString(), Qt::ISODate);
    text.mTime = time.toSecsSinceEpoch();
    text.mOwner = ReadRecordOwner(head.mObject.value(kOwnerKey).toObject());
    text.mBase = ReadMark(head.mObject.value(kBaseKey));
    text.mText = ReadMark(head.mObject.value(kTextKey));
    bytes.erase(0, end + 1);
    text.mBytes = std::move(bytes);
    const bool isWhole = !text.mProject.empty() && time.isValid() && text.mText == MarkContent(text.mBytes);
    return isWhole ? std::optional(std::move(text)) : std::nullopt;
}

namespace {

constexpr std::size_t kLongestFile = kKeptTextLimit + kLongestHead;

/// What may be all that is left of a text.
void KeepOrRemove(const std::string& path) {
    if (ParseKeptText(GetServices().mFileSystem->ReadSmallFile(path, kLongestFile)))
        KeptTexts::Claim(path, KeptTexts::MakePath(FolderOf(path)));
    else
        KeptTexts::Remove(path);
}

}  // namespace

namespace KeptTexts {

void Sweep(const std::string& folder) {
    SweepUnfinishedSaves(folder, KeepOrRemove);
}

std::string MakePath(const std::string& folder) {
    return folder + '/' + MakeRecordOwner().mNonce + std::string(kExtension);
}

std::vector<KeptTextFile> List(const std::string& folder) {
    std::vector<KeptTextFile> files;
    for (const std::string& name : ListNames(folder))
        if (name.ends_with(kExtension))
            if (std::optional<KeptTextFile> file = ReadFile(folder + '/' + name))
                files.push_back(*std::move(file));
    std::ranges::sort(files, {},
                      [](const KeptTextFile& file) { return std::tie(file.mText.mTime, file.mText.mProject); });
    return files;
}

std::optional<KeptText> Read(const std::string& path) {
    try {
        auto text = ParseKeptText(GetServices().mFileSystem->ReadSmallFile(path, kLongestFile));
        if (!text) TellDamaged(path);
        return text;
    } catch (const host::FileException& exception) {
        if (exception.SystemError() == EFBIG) TellDamaged(path);
        if (exception.SystemError() != EFBIG && !IsAbsence(exception.SystemError())) throw;
        return {};
    }
}

void Write(const std::string& path, const KeptText& text) {
    MakePrivateFolder(FolderOf(path));
    ReplaceFileOrThrow(*GetServices().mFileSystem, path, WriteKeptText(text));
}

bool Claim(const std::string& from, const std::string& to) {
    try {
        MoveOnVolume(from, to);
        return true;
    } catch (const host::FileException& exception) {
        if (!IsAbsence(exception.SystemError())) throw;
        return false;
    }
}

void Remove(const std::string& path) {
    try {
        GetServices().mFileSystem->RemoveFile(path);
    } catch (const host::FileException& exception) {
        if (!IsAbsence(exception.SystemError())) throw;
    }
}

}  // namespace KeptTexts

}  // namespace desk
