#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "desk/core/edges/FileSystem.h"
#include "host/core/Export.h"

namespace desk {

/// A spelling of `name` (bytes) that names share which some volumes take for one: letter case and composed
/// characters do not count. Any thread.
ZUHOST_API std::string FoldSpelling(std::string_view name);

/// What one listing says of a folder, for questions about many names in it. Any thread.
class ZUHOST_API ListedFolder {
public:
    /// Lists `folder` (bytes). Throws `host::FileException`. Waits for the volume.
    ListedFolder(FileSystem& fileSystem, const std::string& folder);

    /// The kind of what has `name`, a link's own kind for a link; absent when nothing has it. `Unknown` when
    /// the volume itself is to be asked: the entry does not tell, or the folder has the name in another
    /// spelling.
    std::optional<ItemKind> Find(const std::string& name) const;

private:
    std::unordered_map<std::string, ItemKind> mKinds;
    std::unordered_set<std::string> mSpellings;
};

}  // namespace desk
