#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

class FileSystem;

/// What is known of items that were moved to a production's trash together. On disk one JSON object (RFC 8259)
/// in UTF-8 a file, `<nonce>.json` in the trash's records folder: "version" (2), "items" (an array of objects
/// with "name" and "from": bytes, percent-encoded as by RFC 3986), "user", "machine", "movedAt" (UTC, ISO
/// 8601). Nobody changes a record: of several that have a name the newest counts, and none does when nothing of
/// that name lies in the trash any more.
struct TrashRecord {
    struct Item {
        /// Where the item lies now: its path relative to the trash folder, in bytes; mostly a name.
        std::string mName;
        /// Where it came from: its path relative to the production's folder, in bytes; for an item from outside
        /// the production its absolute path.
        std::string mFrom;
    };
    std::vector<Item> mItems;
    host::UTF16String mUser;
    host::UTF16String mMachine;
    /// Seconds since the epoch.
    std::int64_t mMovedAt = 0;
};

/// The path of the folder (`kTrashRecordsName`) that holds the records of `trashFolder`; both in bytes.
ZUHOST_API std::string GetTrashRecordsFolder(const std::string& trashFolder);

/// False when nothing stands at `trashFolder`. Throws `host::FileException` when something does that is no
/// folder: ELOOP for a symbolic link, else ENOTDIR; nothing may leave the production so. To be asked before
/// anything moves there. Waits for the volume; any thread.
ZUHOST_API bool IsTrashFolderThere(FileSystem& fileSystem, const std::string& trashFolder);

/// Makes the records folder of `trashFolder`, and the trash folder itself, where they are not there. Throws
/// `host::FileException`, with ELOOP when one of them is a symbolic link. Waits for the volume; any thread.
ZUHOST_API void MakeTrashRecordsFolder(FileSystem& fileSystem, const std::string& trashFolder);

/// Adds a record, making the records folder when there is none. Throws
/// `host::FileException`; then nothing of the record is there. Waits for the volume; any thread.
ZUHOST_API void WriteTrashRecord(FileSystem& fileSystem, const std::string& trashFolder,
                                 const TrashRecord& record);

}  // namespace desk
