// The copies among the operations on items.
#include <cerrno>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/UniqueNames.h"
#include "desk/project/production/CopyDirectoryTree.h"
#include "desk/project/production/ItemOperation.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

/// How often a name may be taken by somebody else between our look and our copy.
constexpr int kTries = 100;

/// The file whose content is copied: a link's target. Throws EISDIR or EINVAL when it is no file.
std::string FindProjectFile(const std::string& path) {
    FileSystem& fileSystem = *GetServices().mFileSystem;
    const bool isLink = fileSystem.Status(path, false).mKind == ItemKind::Link;
    std::string file = isLink ? fileSystem.ResolveLinks(path) : path;
    const ItemKind kind = fileSystem.Status(file, false).mKind;
    if (kind != ItemKind::File)
        throw host::FileException("copy", host::UTF8to16(path), kind == ItemKind::Folder ? EISDIR : EINVAL);
    return file;
}

/// The name must leave room for that of the project's lock.
void CheckProjectName(const host::UTF16String& path) {
    const host::UTF16String name = host::PathUtils::GetFullFilePart(path);
    const NameParts parts = SplitName(name);
    if (parts.mExtension.empty()) throw host::FileException("copy to", path, EINVAL);
    if (MakeName(parts, {}) != name) throw host::FileException("copy to", path, ENAMETOOLONG);
}

}  // namespace

void ItemOperation::Copy(Item& item, WorkProgress& progress) const {
    if (mVerb == Verb::CopyOntoEmptyFolder) return CopyDirectoryTree(item.mFrom, item.mTo, progress);
    if (mVerb == Verb::Copy) return CopyItem(item.mFrom, item.mTo, progress);
    CheckProjectName(item.mDestination);
    const std::string file = FindProjectFile(item.mFrom);
    if (mVerb == Verb::Add) return CopyItem(file, item.mTo, progress);
    CopyUnderFreeName(file, item, progress);
}

void ItemOperation::CopyUnderFreeName(const std::string& file, Item& item, WorkProgress& progress) {
    const host::UTF16String wanted = item.mDestination;
    const auto isTaken = [](const host::UTF16String& path) {
        return IsTaken(*GetServices().mFileSystem, path);
    };
    for (int tries = 1;; ++tries) {
        if (isTaken(wanted)) item.SetDestination(MakeUniquePath(wanted, 1, u"_", isTaken));
        try {
            return CopyItem(file, item.mTo, progress);
        } catch (const host::FileException& exception) {
            if (exception.SystemError() != EEXIST || tries == kTries) throw;
        }
    }
}

}  // namespace desk
