#pragma once

#include <QJsonObject>
#include <cstddef>
#include <string>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {
class FileException;
}

namespace desk {

/// What came of reading a JSON file (RFC 8259) that should hold one object.
struct JsonFile {
    enum class State {
        Read,        ///< `mObject` holds the file's object.
        Absent,      ///< There is no such file.
        Broken,      ///< The content is no JSON object, too large or too deep; `mReason` says what.
        Unreadable,  ///< The disk refused; `mReason` says why.
    };
    State mState = State::Absent;
    QJsonObject mObject;
    /// English, for a log line or a message; without the path.
    std::string mReason;
};

/// After a read of at most `limit` bytes has thrown `exception`: why what stands there can never be read as
/// settings (English, a clause with "it"). Empty when nothing stands there, or the disk refused. Any thread.
ZUHOST_API std::string FindReasonAgainstUse(const host::FileException& exception, std::size_t limit);

inline constexpr std::size_t kJsonFileLimit = std::size_t{1} << 20;

/// Parses `text` as one JSON object; of a repeated key the last value counts. Nesting is bounded by Qt's
/// parser (1024 levels). Any thread; never throws.
ZUHOST_API JsonFile ParseJsonObject(std::string_view text);

/// Reads and parses a file of at most `limit` bytes. May wait for the disk. Any thread; never throws.
ZUHOST_API JsonFile ReadJsonFile(const std::string& path, std::size_t limit = kJsonFileLimit);

/// Replaces the file whole or not at all. Throws `host::FileException`. May wait for the disk, but waits for no
/// caches (`ScNoCacheWaits`). Any thread.
ZUHOST_API void WriteJsonFile(const std::string& path, const QJsonObject& object);

/// What became of a file that cannot be used.
struct KeptAside {
    /// False when it could not be renamed: it must not be replaced.
    bool mIsMoved = false;
    /// What to tell the user: the file, and where it is kept or why it could not be read. Localised; names in
    /// it are raw.
    host::UTF16String mNotice;
};

/// What to tell the user of settings that the disk does not give out, for this `reason`. Localised; names in it
/// are raw. Any thread.
ZUHOST_API host::UTF16String DescribeUnreadableSettings(const std::string& path, const std::string& reason);

/// Renames a file that cannot be used to "<name>.unreadable-<n>", n from 1, so that nothing ever replaces it.
/// Logged as a warning, with the `reason` (English). May wait for the disk. Any thread; never throws.
ZUHOST_API KeptAside KeepAside(const std::string& path, const std::string& reason);

/// A settings file as the program may use it.
struct SettingsFile {
    /// Empty when there is no file or it could not be used.
    QJsonObject mObject;
    /// False when a file stands there that could not be read and could not be moved aside: it must not be
    /// replaced.
    bool mMayWrite = true;
    /// What to tell the user when the settings could not be used, as in `KeptAside`.
    host::UTF16String mNotice;
};

/// Reads a settings file. One that is broken is kept aside (`KeepAside`). Whatever goes wrong is logged as a
/// warning. May wait for the disk. Any thread; never throws.
ZUHOST_API SettingsFile ReadSettingsFile(const std::string& path);

}  // namespace desk
