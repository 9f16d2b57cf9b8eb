// Whether moves can begin, before anything is done for them.
#include <algorithm>
#include <cerrno>
#include <map>

#include "desk/core/durable/Presence.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/AskVolume.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/project/production/ItemOperation.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

using host::FileException;
using host::UTF16String;

/// Why nothing can be made or removed in a folder, if the volume says so. On a worker.
std::optional<FileException> FindRefusal(const UTF16String& folder) {
    try {
        GetServices().mFileSystem->TryToChangeFolder(host::UTF16to8(folder));
    } catch (const FileException& exception) {
        if (exception.SystemError() != ENOENT && IsRefusal(exception.SystemError())) return exception;
    }
    return std::nullopt;
}

using Refusals = std::map<UTF16String, std::optional<FileException>>;

/// By folder. The one of the destination is last, and need not be there.
Refusals FindRefusals(const host::UTF16StringVec& folders, const UTF16String& destination) {
    Refusals refusals;
    for (const UTF16String& folder : folders)
        if (!refusals.contains(folder)) refusals[folder] = FindRefusal(folder);
    refusals[destination] = FindRefusal(destination);
    return refusals;
}

}  // namespace

}  // namespace desk

namespace host {

bool CanMoveItemsTo(const UTF16StringVec& sources, const UTF16String& folder) {
    if (sources.empty()) return true;
    const UTF16String destination = PathUtils::ToNormalizedPath(folder);
    UTF16StringVec folders;
    for (const UTF16String& source : sources)
        folders.emplace_back(desk::FolderOf(PathUtils::ToNormalizedPath(source)));
    const UTF16String name = PathUtils::GetFullFilePart(PathUtils::ToNormalizedPath(sources.front()));
    const desk::Refusals refusals = desk::AskVolume(
        ZString("$$$/Vantor/Desk/Files/Checking=Checking “@0”", {name}), "check", sources.front(),
        [folders, destination] { return desk::FindRefusals(folders, destination); });
    UTF16StringVec texts;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const auto& atSource = refusals.at(folders[i]);
        const auto& refusal = atSource ? atSource : refusals.at(destination);
        if (refusal) texts.push_back(desk::DescribeNotMoved(PathUtils::ToNormalizedPath(sources[i]), *refusal));
    }
    desk::TellWhatWasNotDone(desk::ItemOperation::Verb::Move, texts, false);
    return texts.empty();
}

}  // namespace host
