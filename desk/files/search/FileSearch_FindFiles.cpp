#include <algorithm>
#include <mutex>

#include "desk/core/names/FolderPath.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/search/FolderWalk.h"
#include "host/core/FoldASCII.h"
#include "host/core/Localizer.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"

namespace host {
namespace {

/// Collects files, on several workers.
class Collector {
public:
    explicit Collector(const UTF16String& extension) : mExtension(extension) {}

    void Take(const UTF16String& folder, const std::vector<desk::FolderEntry>& entries) {
        for (const desk::FolderEntry& entry : entries) {
            const UTF16String name = UTF8to16(entry.mName);
            if (entry.mKind == desk::ItemKind::Folder || !HasEndingFoldingASCII(name, mExtension)) continue;
            UTF16String path = desk::JoinPath<UTF16String>(folder, name);
            if (entry.mKind == desk::ItemKind::Link &&
                desk::ResolveKind(UTF16to8(path), entry.mKind) != desk::ItemKind::File)
                continue;
            const std::lock_guard lock(mMutex);
            mFound.push_back(std::move(path));
        }
    }
    UTF16StringVec GetSorted() {
        std::ranges::sort(mFound);
        return std::move(mFound);
    }

private:
    const UTF16String mExtension;
    std::mutex mMutex;
    UTF16StringVec mFound;
};

}  // namespace

UTF16StringVec FileSearch::FindFiles(const UTF16String& root, const UTF16String& extension) {
    Collector collector(extension);
    desk::RunLongWork(
        ZString("$$$/Vantor/Desk/Files/Searching=Searching “@0”", {PathUtils::GetFullFilePart(root)}),
        [&](desk::WorkProgress& progress) {
            desk::FolderWalk({.mVisitor = [&](const UTF16String& folder,
                                              const auto& entries) { collector.Take(folder, entries); },
                              .mIsEntered = {},
                              .mAnswerWatch = nullptr,
                              .mRoot = PathUtils::ToNormalizedPath(root)},
                             nullptr)
                .Run(progress);
        });
    return collector.GetSorted();
}

}  // namespace host
