#include "host/project/ProductionItems.h"

#include <algorithm>
#include <chrono>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/UniqueNames.h"
#include "desk/core/work/AskVolume.h"
#include "desk/project/production/CopyQueue.h"
#include "host/core/Localizer.h"
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
    const UTF16String normalized = PathUtils::ToNormalizedPath(path);
    const bool isFolder = path.ends_with(PathUtils::GetPathSeparator());
    return desk::MakeUniquePath(isFolder ? PathUtils::AddTrailingSlash(normalized) : normalized, startNumber,
                                separator, IsTakenIn(namesToAvoid));
}

}  // namespace host
