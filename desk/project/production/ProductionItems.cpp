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
    /// What `make` makes of a path, for which it asks whether another one is taken.
    template <class Make>
    UTF16String Take(const UTF16String& path, const Make& make) {
        const UTF16String unused =
            make(path, [this](const UTF16String& candidate) { return IsTaken(candidate); });
        GiveAway(unused);
        return unused;
    }
    void GiveAway(const UTF16String& path) { mGiven.insert(desk::FoldSpelling(UTF16to8(path))); }

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

/// What `make` makes of each of `paths` (normalised), while the window lives; nothing has a name in `taken`.
template <class Make>
UTF16StringVec TakeUnusedNames(const UTF16StringVec& paths, const UTF16StringVec& taken, const Make& make) {
    if (paths.empty()) return {};
    const UTF16String name = PathUtils::GetFullFilePart(PathUtils::ToNormalizedPath(paths.front()));
    return desk::AskVolume(ZString("$$$/Vantor/Desk/Files/Checking=Checking “@0”", {name}), "list folder of",
                           paths.front(), [paths, taken, make] {
                               UnusedNames names;
                               for (const UTF16String& path : taken) names.GiveAway(path);
                               UTF16StringVec unused;
                               for (const UTF16String& path : paths) unused.push_back(names.Take(path, make));
                               return unused;
                           });
}

UTF16String MarkFolder(const UTF16String& path) {
    return PathUtils::IsKnownDirectory(path) ? PathUtils::AddTrailingSlash(path) : path;
}

UTF16String GetCopyWord() {
    return ZString("$$$/Vantor/Desk/Project/CopyName=copy#{after the name of what was copied}");
}

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
    return desk::MakeCopyPath(MarkFolder(PathUtils::ToNormalizedPath(path)), GetCopyWord(),
                              [&](const UTF16String& candidate) {
                                  const desk::CopyQueue* queue = desk::CopyQueue::Current();
                                  return (queue && queue->IsDestination(candidate)) || isTaken(candidate);
                              });
}

UTF16StringVec GetZuProductionItemCopyPaths(const UTF16StringVec& paths) {
    UTF16StringVec normalized, taken;
    for (const UTF16String& path : paths) normalized.push_back(MarkFolder(PathUtils::ToNormalizedPath(path)));
    if (const desk::CopyQueue* queue = desk::CopyQueue::Current())
        for (const desk::CopyJob& job : queue->GetJobs())
            if (!job.IsFinished()) taken.push_back(job.mDestination);
    return TakeUnusedNames(normalized, taken,
                           [word = GetCopyWord()](const UTF16String& path, const auto& isTaken) {
                               return desk::MakeCopyPath(path, word, isTaken);
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
    UTF16StringVec normalized;
    std::ranges::transform(paths, std::back_inserter(normalized), NormalizeKeepingSlash);
    return TakeUnusedNames(normalized, {},
                           [startNumber, separator](const UTF16String& path, const auto& isTaken) {
                               return desk::MakeUniquePath(path, startNumber, separator, isTaken);
                           });
}

}  // namespace host
