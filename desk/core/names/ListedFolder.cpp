#include "desk/core/names/ListedFolder.h"

#include <utility>

#include "desk/core/names/QtStrings.h"

namespace desk {

std::string FoldSpelling(std::string_view name) {
    return ToUTF8(ToQStringFromUTF8(name).normalized(QString::NormalizationForm_KD).toCaseFolded());
}

ListedFolder::ListedFolder(FileSystem& fileSystem, const std::string& folder) {
    for (FolderEntry& entry : fileSystem.ListFolder(folder)) {
        mSpellings.insert(FoldSpelling(entry.mName));
        mKinds.emplace(std::move(entry.mName), entry.mKind);
    }
}

std::optional<ItemKind> ListedFolder::Find(const std::string& name) const {
    const auto found = mKinds.find(name);
    if (found != mKinds.end()) return found->second;
    return mSpellings.contains(FoldSpelling(name)) ? std::optional(ItemKind::Unknown) : std::nullopt;
}

}  // namespace desk
