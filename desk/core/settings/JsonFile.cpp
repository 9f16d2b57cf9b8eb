#include "desk/core/settings/JsonFile.h"

#include <QJsonDocument>
#include <cerrno>
#include <cstring>

#include "desk/core/durable/CacheWaits.h"
#include "desk/core/durable/ReplaceFile.h"
#include "desk/core/durable/VolumeMove.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"

namespace desk {
namespace {

JsonFile Failed(JsonFile::State state, std::string reason) {
    return {state, {}, std::move(reason)};
}

JsonFile FromException(const host::FileException& exception, std::size_t limit) {
    if (exception.SystemError() == ENOENT) return Failed(JsonFile::State::Absent, "there is no such file");
    std::string reason = FindReasonAgainstUse(exception, limit);
    return reason.empty() ? Failed(JsonFile::State::Unreadable, std::strerror(exception.SystemError()))
                          : Failed(JsonFile::State::Broken, std::move(reason));
}

/// Renames a file that cannot be used to the first free name; the new path, or empty when that failed.
std::string SetAside(const std::string& path) {
    const ScNoCacheWaits noWaits;
    for (int n = 1; n <= 1000; ++n) {
        const std::string aside = path + ".unreadable-" + std::to_string(n);
        try {
            MoveOnVolume(path, aside);
            return aside;
        } catch (const host::FileException& exception) {
            if (exception.SystemError() == EEXIST) continue;
            Log(LogLevel::Warning, exception.what());
            return {};
        }
    }
    return {};
}

/// `aside` is empty for a file that stands where it stood.
KeptAside Explain(const std::string& path, const std::string& reason, const std::string& aside) {
    KeptAside kept{!aside.empty(), {}};
    kept.mNotice = kept.mIsMoved
                       ? host::ZString(
                             "$$$/Desk/Settings/SetAside=The settings in “@0” are damaged and were not "
                             "used. The file is kept as “@1”.",
                             {host::UTF8to16(path), host::UTF8to16(aside)})
                       : DescribeUnreadableSettings(path, reason);
    Log(LogLevel::Warning, "The settings in \"" + path + "\" could not be read: " + reason +
                               (kept.mIsMoved ? ". The file is kept as \"" + aside + "\"."
                                              : ". The file is left as it is, and changes are not saved."));
    return kept;
}

}  // namespace

std::string FindReasonAgainstUse(const host::FileException& exception, std::size_t limit) {
    switch (exception.SystemError()) {
        case EFBIG:
            return "it is larger than " + std::to_string(limit / 1024) + " KiB";
        case EINVAL:
            return "it is no regular file";
        case ELOOP:
            return "it is a symbolic link";
        default:
            return {};
    }
}

JsonFile ParseJsonObject(std::string_view text) {
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(
        QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())), &error);
    if (error.error != QJsonParseError::NoError)
        return Failed(JsonFile::State::Broken, "it is no valid JSON, " + error.errorString().toStdString() +
                                                   " at byte " + std::to_string(error.offset));
    if (!document.isObject()) return Failed(JsonFile::State::Broken, "its content is no JSON object");
    return {JsonFile::State::Read, document.object(), {}};
}

JsonFile ReadJsonFile(const std::string& path, std::size_t limit) {
    try {
        return ParseJsonObject(GetServices().mFileSystem->ReadSmallFile(path, limit));
    } catch (const host::FileException& exception) {
        return FromException(exception, limit);
    } catch (const std::exception& exception) {
        return Failed(JsonFile::State::Unreadable, exception.what());
    }
}

void WriteJsonFile(const std::string& path, const QJsonObject& object) {
    const ScNoCacheWaits noWaits;
    ReplaceFileOrThrow(*GetServices().mFileSystem, path, QJsonDocument(object).toJson().toStdString());
}

host::UTF16String DescribeUnreadableSettings(const std::string& path, const std::string& reason) {
    return host::ZString(
        "$$$/Desk/Settings/Unreadable=The settings in “@0” could not be read: @1. The file is left as it is, and "
        "changes are not saved.",
        {host::UTF8to16(path), host::UTF8to16(reason)});
}

KeptAside KeepAside(const std::string& path, const std::string& reason) {
    return Explain(path, reason, SetAside(path));
}

SettingsFile ReadSettingsFile(const std::string& path) {
    JsonFile file = ReadJsonFile(path);
    SettingsFile settings;
    if (file.mState == JsonFile::State::Read) settings.mObject = std::move(file.mObject);
    if (file.mState == JsonFile::State::Read || file.mState == JsonFile::State::Absent) return settings;
    const KeptAside kept = file.mState == JsonFile::State::Broken ? KeepAside(path, file.mReason)
                                                                  : Explain(path, file.mReason, {});
    settings.mMayWrite = kept.mIsMoved;
    settings.mNotice = kept.mNotice;
    return settings;
}

}  // namespace desk
