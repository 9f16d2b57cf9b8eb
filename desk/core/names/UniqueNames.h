#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

class FileSystem;

/// A name in two parts: numbers and words are put between them.
struct NameParts {
    host::UTF16String mStem;
    /// The project extension as the name spells it, with its dot; empty for all other names.
    host::UTF16String mExtension;
};

/// Splits the last component of a path. Any thread.
ZUHOST_API NameParts SplitName(std::u16string_view name);

/// The parts with `suffix` between them. The stem loses whole characters from its end until the name's bytes
/// can stand on disk, and for a project those of its lock file too (249; else 255). Any thread.
ZUHOST_API host::UTF16String MakeName(const NameParts& parts, const host::UTF16String& suffix);

/// True when something stands at `path`, a link too, as the volume itself answers. False when it does not
/// answer. Waits for the volume; any thread.
ZUHOST_API bool IsTaken(FileSystem& fileSystem, const host::UTF16String& path);

// A path with a separator at its end is a folder's: its name has no extension.

/// `path` with `separator` and the first number from `startNumber` on for which `isTaken`, which is given the
/// new path, says false. Any thread.
ZUHOST_API host::UTF16String MakeUniquePath(const host::UTF16String& path, int startNumber,
                                            const host::UTF16String& separator,
                                            const std::function<bool(const host::UTF16String&)>& isTaken);

/// Where a copy of `path` is to stand: beside it, with `word` behind the name ("x copy"), from the second on
/// with a number too ("x copy 2"). A name that ends so already counts on. The first for which `isTaken` says
/// false. Any thread.
ZUHOST_API host::UTF16String MakeCopyPath(const host::UTF16String& path, const host::UTF16String& word,
                                          const std::function<bool(const host::UTF16String&)>& isTaken);

}  // namespace desk
