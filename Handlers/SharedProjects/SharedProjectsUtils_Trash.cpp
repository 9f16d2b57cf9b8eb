// The production's trash: deleting is moving there.
#include <algorithm>
#include <iterator>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "host/core/FoldASCII.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/files/Dir.h"
#include "host/files/FileUtils.h"
#include "host/files/PathUtils.h"
#include "host/project/ItemOperations.h"
#include "host/project/KnownProjects.h"
#include "host/project/OpenProjects.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"

namespace HandlerSharedProjects::Utils {

namespace {

/// Asks the disk: what was last heard of the production may be older than a trash folder.
bool MakeSureOfFolder(const UTF16String& path) {
    const Dir folder(path);
    if (folder.Exists()) return true;
    try {
        FileUtils::CreateNewDirectory(path);
        return true;
    } catch (const std::exception& exception) {
        if (folder.Exists()) return true;
        LogException(exception, __PRETTY_FUNCTION__);
        return false;
    }
}

UTF16StringVec GetOpenPaths() {
    UTF16StringVec paths;
    for (const ProjectRef& project : GetOpenProjectList()) paths.push_back(project->GetProjectPath());
    return paths;
}

/// Those of the projects that were `open` and are not any more, and lie among or inside what has stayed.
void OpenAgain(const UTF16StringVec& open, const UTF16StringVec& stayed) {
    for (const UTF16String& path : open) {
        const bool hasStayed = std::ranges::any_of(stayed, [&path](const UTF16String& item) {
            return Utilities::IsPathWithinDirectory(path, PathUtils::ToNormalizedPath(item), true);
        });
        if (hasStayed && !IsProjectOpen(path)) OpenProjectOutsideTrash(path);
    }
}

/// In each of the batches every name is there once: items of one name meet each other in the trash, where the
/// later ones get free names.
std::vector<UTF16StringVec> SplitByName(const UTF16StringVec& paths) {
    std::vector<UTF16StringVec> batches;
    std::map<UTF16String, std::size_t> counts;
    for (const UTF16String& path : paths) {
        UTF16String name = PathUtils::GetFullFilePart(PathUtils::ToNormalizedPath(path));
        std::ranges::transform(name, name.begin(), FoldASCII<char16_t>);
        const std::size_t count = counts[name]++;
        if (count == batches.size()) batches.emplace_back();
        batches[count].push_back(path);
    }
    return batches;
}

/// What fails or is cancelled ends all.
CopyReport MoveAll(const UTF16StringVec& paths, const UTF16String& trashFolder) {
    CopyReport all;
    bool goesOn = true;
    for (const UTF16StringVec& batch : SplitByName(paths)) {
        CopyReport report{.mStayed = batch, .mDone = {}};
        if (goesOn) goesOn = CopyFiles(batch, trashFolder, true, true, report);
        std::ranges::copy(report.mStayed, std::back_inserter(all.mStayed));
        std::ranges::copy(report.mDone, std::back_inserter(all.mDone));
        all.mIsCancelled = all.mIsCancelled || report.mIsCancelled;
    }
    return all;
}

UTF16String DescribeWhyNotTrashed(const UTF16String& path) {
    if (!IsInZuProductionTrash(path, true)) return DescribeWhyHeld(path);
    return ZString("$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/InTrash=“@0” is in the trash already.",
                   {Columns::GetPathDisplayName(path)});
}

std::u16string_view FolderOf(std::u16string_view path) {
    return path.substr(0, path.rfind(PathUtils::GetPathSeparator()) + 1);
}

/// The end of the paths that stand in the same folder as the first one, one after another.
UTF16StringVec::const_iterator FindEndOfFolder(UTF16StringVec::const_iterator begin,
                                               UTF16StringVec::const_iterator end) {
    return std::find_if(begin, end,
                        [&](const UTF16String& path) { return FolderOf(path) != FolderOf(*begin); });
}

/// Which of these items of one folder are known to be projects that nobody holds, outside the trash: there may
/// be a hundred thousand, and one question tells.
std::vector<bool> FindFreeProjects(std::span<const UTF16String> paths) {
    std::vector<bool> areFree(paths.size());
    const UTF16String folder = PathUtils::ToNormalizedPath(UTF16String(FolderOf(paths.front())));
    if (IsInZuProductionTrash(folder, true)) return areFree;
    UTF16StringVec names;
    names.reserve(paths.size());
    for (const UTF16String& path : paths) names.push_back(path.substr(FolderOf(path).size()));
    const std::vector<KnownProject> projects = GetKnownProjects(folder, names, MissingFacts::Leave);
    for (std::size_t i = 0; i < paths.size(); ++i) areFree[i] = projects[i].mIsListed && !projects[i].mLock;
    return areFree;
}

}  // namespace

void MoveToSharedProjectsTrash(const UTF16StringVec& paths, bool closeWithoutPrompt, bool saveFirst) {
    const UTF16String trashFolder = GetZuProductionTrashDirectoryPath();
    const UTF16StringVec open = GetOpenPaths();
    // A project is not closed for a move that cannot begin.
    if (!open.empty() && !trashFolder.empty() && !CanMoveItemsTo(paths, trashFolder)) return;
    if (!CloseOpenProjectsInList(paths, closeWithoutPrompt, saveFirst)) return;
    CopyReport report{.mStayed = paths, .mDone = {}};
    if (!trashFolder.empty() && MakeSureOfFolder(trashFolder))
        TellTogether([&] { report = MoveAll(paths, trashFolder); });
    TellMoved(report, trashFolder);
    OpenAgain(open, report.mStayed);
}

bool CanAllBeDeleted(const UTF16StringVec& paths) {
    return !paths.empty() && DescribeWhyNotDeleted(paths).empty();
}

UTF16String DescribeWhyNotDeleted(const UTF16StringVec& paths) {
    for (auto begin = paths.begin(); begin != paths.end();) {
        const auto end = FindEndOfFolder(begin, paths.end());
        const std::vector<bool> areFree = FindFreeProjects({begin, end});
        for (std::size_t i = 0; begin != end; ++begin, ++i) {
            if (areFree[i]) continue;
            if (UTF16String reason = DescribeWhyNotTrashed(*begin); !reason.empty()) return reason;
        }
    }
    return {};
}

bool IsInTrash(const UTF16String& path, bool includeTrashFolder) {
    return IsInZuProductionTrash(path, includeTrashFolder);
}

}  // namespace HandlerSharedProjects::Utils
