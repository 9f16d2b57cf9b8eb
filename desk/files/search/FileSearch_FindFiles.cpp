#include <algorithm>
#include <mutex>

#include "desk/core/names/FolderPath.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/search/FolderWalk.h"
#include "host/core/Localizer.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"

namespace host {
namespace {

/// `text` ends with `ending`, ASCII letter case ignored, and has something before it.
bool EndsWithIgnoringCase(std::u16string_view text, std::u16string_view ending) {
    auto fold = [](char16_t unit) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    };
    return text.size() > ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), text.rbegin(),
                      [&](char16_t a, char16_t b) { return fold(a) == fold(b); });
}

/// Collects files, on several workers.
class Collector {
public:
    explicit Collector(const UTF16String& extension) : mExtension(extension) {}

    void Take(const UTF16String& folder, const std::vector<desk::FolderEntry>& entries) {
        for (const desk::FolderEntry& entry : entries) {
            const UTF16String name = UTF8to16(entry.mName);
            if (entry.mKind == desk::ItemKind::Folder || !EndsWithIgnoringCase(name, mExtension)) continue;
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
