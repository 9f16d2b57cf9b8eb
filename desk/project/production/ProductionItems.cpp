#include "host/project/ProductionItems.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <optional>
#include <set>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/ListedFolder.h"
#include "desk/core/names/UniqueNames.h"
#include "desk/core/work/AskVolume.h"
#include "desk/project/production/CopyQueue.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace host {

namespace {

void AddToQueue(const UTF16String& source, const UTF16String& destination, desk::CopyQueue::IfTaken ifTaken) {
    if (desk::CopyQueue* queue = desk::CopyQueue::Current())
        queue->Add(source, destination, ifTaken);
    else
        desk::Log(desk::LogLevel::Error, "There is no queue to copy " + UTF16to8(source));
}

/// A volume that hangs is not waited for.
bool IsTakenOnDisk(const UTF16String& path) {
    return desk::AskVolumeWithin(desk::kVolumePatience,
                                 [path] { return desk::IsTaken(*desk::GetServices().mFileSystem, path); })
        .value_or(false);
}

/// Normalised; a folder's path keeps the separator at its end.
UTF16String NormalizeKeepingSlash(const UTF16String& path) {
    const UTF16String normalized = PathUtils::ToNormalizedPath(path);
    return path.ends_with(PathUtils::GetPathSeparator()) ? PathUtils::AddTrailingSlash(normalized) : normalized;
}

/// Gives each item a name that nothing has, by one listing of each folder. On a worker.
class UnusedNames {
public:
    UTF16String Take(const UTF16String& path, int startNumber, const UTF16String& separator) {
        const UTF16String unused = desk::MakeUniquePath(
            path, startNumber, separator, [this](const UTF16String& candidate) { return IsTaken(candidate); });
        mGiven.insert(desk::FoldSpelling(UTF16to8(unused)));
        return unused;
    }

private:
    bool IsTaken(const UTF16String& path) {
        const std::string bytes = UTF16to8(path);
        if (mGiven.contains(desk::FoldSpelling(bytes))) return true;
        const std::optional<desk::ListedFolder>& folder = List(desk::FolderOf(bytes));
        const auto found = folder ? folder->Find(desk::NameOf(bytes)) : desk::ItemKind::Unknown;
        if (found != desk::ItemKind::Unknown) return found.has_value();
        return desk::IsTaken(*desk::GetServices().mFileSystem, path);
    }

    const std::optional<desk::ListedFolder>& List(const std::string& folder) {
        const auto [entry, isNew] = mFolders.try_emplace(folder);
        try {
            if (isNew) entry->second.emplace(*desk::GetServices().mFileSystem, folder);
        } catch (const FileException&) {
            // Some folders can be entered, but not listed: each name is looked up.
        }
        return entry->second;
    }

    std::map<std::string, std::optional<desk::ListedFolder>> mFolders;
    std::set<std::string> mGiven;
};

/// Says of a path whether a new item cannot have it.
auto IsTakenIn(const UTF16StringVec& names) {
    return [&names](const UTF16String& path) {
        return std::ranges::find(names, PathUtils::GetFullFilePart(path)) != names.end() || IsTakenOnDisk(path);
    };
}

}  // namespace

void AddProjectsToZuProduction(const UTF16StringVec& paths, const UTF16String& folder) {
    const UTF16String destination = PathUtils::ToNormalizedPath(folder);
    for (const UTF16String& path : paths) {
        const UTF16String source = PathUtils::ToNormalizedPath(path);
        if (Utilities::IsPathWithinDirectory(source, destination, false)) continue;
        AddToQueue(source, PathUtils::CombinePaths(destination, PathUtils::GetFullFilePart(source)),
                   desk::CopyQueue::IfTaken::MakeUnique);
    }
}

void AddProjectToZuProduction(const UTF16String& path, const UTF16String& destination) {
    AddToQueue(PathUtils::ToNormalizedPath(path), PathUtils::ToNormalizedPath(destination),
               desk::CopyQueue::IfTaken::Fail);
}

UTF16String GetZuProductionItemCopyPath(const UTF16String& path, const UTF16StringVec& existingNames) {
    const auto isTaken = IsTakenIn(existingNames);
    const UTF16String normalized = PathUtils::ToNormalizedPath(path);
    return desk::MakeCopyPath(
        PathUtils::IsKnownDirectory(normalized) ? PathUtils::AddTrailingSlash(normalized) : normalized,
        ZString("$$$/Vantor/Desk/Project/CopyName=copy#{after the name of what was copied}"),
        [&](const UTF16String& candidate) {
            const desk::CopyQueue* queue = desk::CopyQueue::Current();
            return (queue && queue->IsDestination(candidate)) || isTaken(candidate);
        });
}

bool Utilities::IsPathWithinDirectory(const UTF16String& path, const UTF16String& folder, bool orIsFolder) {
    if (folder.empty() || !desk::IsSameOrBelow(path, folder)) return false;
    return orIsFolder || path.size() > folder.size();
}

UTF16String Utilities::MakeUniqueFilename(const UTF16String& path, int startNumber,
                                          const UTF16String& separator, const UTF16StringVec& namesToAvoid) {
    return desk::MakeUniquePath(NormalizeKeepingSlash(path), startNumber, separator, IsTakenIn(namesToAvoid));
}

UTF16StringVec Utilities::MakeUniqueFilenames(const UTF16StringVec& paths, int startNumber,
                                              const UTF16String& separator) {
    if (paths.empty()) return {};
    UTF16StringVec normalized;
    std::ranges::transform(paths, std::back_inserter(normalized), NormalizeKeepingSlash);
    const UTF16String name = PathUtils::GetFullFilePart(PathUtils::ToNormalizedPath(paths.front()));
    return desk::AskVolume(ZString("$$$/Vantor/Desk/Files/Checking=Checking “@0”", {name}), "list folder of",
                           paths.front(), [normalized, startNumber, separator] {
                               UnusedNames names;
                               UTF16StringVec unused;
                               for (const UTF16String& path : normalized)
                                   unused.push_back(names.Take(path, startNumber, separator));
                               return unused;
                           });
}

}  // namespace host
