#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "desk/core/names/LockRecord.h"
#include "host/core/Export.h"

/// The names of the host's hidden temporary files and folders. Each tells the process that it is of, so that
/// what that leaves behind can be told even when the file is empty. All are made and parsed here; at most 255
/// bytes. Any thread.
namespace desk {

class Desktop;

/// What a temporary is that belongs to another name in its folder.
enum class TemporaryPurpose {
    /// ".zusave-": the text that is to replace a file. Once the file is gone it may be all that is left of it.
    Save,
    /// ".zutold-": the same, after the user was told that the text may be there and nowhere else.
    ToldSave,
    /// ".zucopy-": the mark of a folder that was made empty, to be filled by a copy in one step.
    FolderCopy,
    /// ".zulock-": the record of a lock, or of a guard, that is about to be taken.
    Lock,
};

/// The name of a temporary of the process that `owner` is a record of, of something that is worth nothing
/// before it has its final name: ".zutmp-", the record's nonce, and the process.
ZUHOST_API std::string MakeTemporaryName(const LockRecord& owner);

/// The name of a temporary for the entry `target` of the same folder (a name in bytes): the prefix of
/// `purpose`, a digest of `target`, the record's nonce, and the process.
ZUHOST_API std::string MakeTemporaryNameFor(TemporaryPurpose purpose, std::string_view target,
                                            const LockRecord& owner);

/// True for the name of a temporary of the host, of whatever kind and process.
ZUHOST_API bool IsTemporaryName(std::string_view name);

/// The process that a temporary's name tells.
struct TemporaryOwner {
    /// A digest of the machine's id and name: machines that were cloned share an id, but hardly a name.
    std::string mMachineDigest;
    /// Its nonce, and what `FindProcessState` looks at; the rest is not known.
    LockRecord mRecord;

    /// True when the process is known to be gone, by the rule of `IsLockStale`. Reads /proc only.
    ZUHOST_API bool IsGone(const Desktop& desktop) const;
};

/// True for a name of `MakeTemporaryName` whose process is known to be gone (`TemporaryOwner::IsGone`).
/// Reads /proc only.
ZUHOST_API bool IsTemporaryOfDead(std::string_view name, const Desktop& desktop);

/// What a name of `MakeTemporaryNameFor` tells.
struct TargetedTemporary {
    TemporaryPurpose mPurpose = TemporaryPurpose::Save;
    /// 16 hexadecimal digits in lower case.
    std::string mTargetDigest;
    TemporaryOwner mOwner;

    bool IsFor(std::string_view target) const;
    /// The text of a save, told or not.
    bool IsSave() const { return mPurpose == TemporaryPurpose::Save || mPurpose == TemporaryPurpose::ToldSave; }
};

/// Absent for every other name, and for one that does not tell its process.
ZUHOST_API std::optional<TargetedTemporary> ParseTargetedTemporary(std::string_view name);

}  // namespace desk
