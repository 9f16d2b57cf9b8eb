#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/core/names/LockRecord.h"
#include "desk/core/names/RecordOwner.h"
#include "desk/project/document/ProjectFile.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// What tells a file's content from every other.
struct ContentMark {
    std::uint64_t mSize = 0;
    /// SHA-256, in hexadecimal digits.
    std::string mDigest;

    friend bool operator==(const ContentMark&, const ContentMark&) = default;
};

/// The mark of a file that holds exactly `bytes`, which may be empty. Takes time in proportion to them. Any
/// thread.
ZUHOST_API ContentMark MarkContent(std::string_view bytes);

/// Unsaved text of an open project, kept in the profile in case the program does not come to its end. One file
/// each, which `docs/recovery.md` describes; only its owner may read it (mode 0600).
struct KeptText {
    /// The project's path.
    host::UTF16String mProject;
    /// When the text was as it is, in seconds since the epoch.
    std::int64_t mTime = 0;
    /// The program that keeps it.
    LockRecord mOwner;
    /// What the project's file held when it was read or saved last; empty when the text is based on a state
    /// before that.
    ContentMark mBase;
    ContentMark mText;
    /// The text as it would be saved.
    std::string mBytes;
};

/// The largest text that is kept, in bytes.
inline constexpr std::size_t kKeptTextLimit = kEditableLimit;

/// The format's one writer and one reader. Absent for what is damaged.
ZUHOST_API std::string WriteKeptText(const KeptText& text);
ZUHOST_API std::optional<KeptText> ParseKeptText(std::string bytes);

/// A file with kept text.
struct KeptTextFile {
    /// In bytes.
    std::string mPath;
    OwnerStanding mStanding = OwnerStanding::Unknown;
    /// Without the bytes.
    KeptText mText;
};

/// The kept texts of a profile. Every operation waits for its disk: for workers. Any thread.
namespace KeptTexts {

/// A name that no other file in `folder` has.
ZUHOST_API std::string MakePath(const std::string& folder);

/// Deals with what programs that are gone were writing in `folder` when they ended (`SweepUnfinishedSaves`): a
/// text that is whole, and of which no other state is kept, is kept from now on; the rest is removed.
ZUHOST_API void Sweep(const std::string& folder);

/// What programs keep in `folder`, the oldest text first. A file that is damaged is logged, and stays. Throws
/// `host::FileException` when the folder cannot be read; one that is not there holds nothing.
ZUHOST_API std::vector<KeptTextFile> List(const std::string& folder);

/// Absent when it is not there any more or damaged; throws `host::FileException` otherwise.
ZUHOST_API std::optional<KeptText> Read(const std::string& path);

/// Replaces the file at `path`, whole or not at all; makes the folder where it is not there. Throws
/// `host::FileException`.
ZUHOST_API void Write(const std::string& path, const KeptText& text);

/// Gives the file at `from` the name `to`, which of several programs one can do. False when it is not there any
/// more. Throws `host::FileException`.
ZUHOST_API bool Claim(const std::string& from, const std::string& to);

/// Throws `host::FileException` unless it is gone.
ZUHOST_API void Remove(const std::string& path);

}  // namespace KeptTexts

}  // namespace desk
