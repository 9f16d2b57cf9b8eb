#include "desk/files/search/NameScan.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/work/ParallelWork.h"
#include "host/project/ProjectFiles.h"

namespace desk {
namespace {

/// Less than this is looked through on one thread.
constexpr std::size_t kBytesPerThread = 512 * 1024;

/// The folders at and below a root, in the order of their depth.
class Tree {
public:
    Tree(const host::UTF16String& root, const std::vector<KnownNames>& known) {
        std::unordered_map<std::u16string_view, const KnownNames*> byPath(known.size());
        for (const KnownNames& each : known) byPath.try_emplace(each.mNames->Folder(), &each);
        host::UTF16StringVec folders{root};
        while (!folders.empty()) {
            host::UTF16StringVec below;
            for (host::UTF16String& folder : folders) {
                const auto found = byPath.find(folder);
                if (found == byPath.end()) {
                    mUnknown.push_back(std::move(folder));
                    continue;
                }
                mKnown.push_back(found->second);
                std::ranges::move(found->second->mNames->FindFolders(), std::back_inserter(below));
            }
            folders = std::move(below);
        }
    }

    std::vector<const KnownNames*> mKnown;
    host::UTF16StringVec mUnknown;
};

/// A link counts as what it leads to; what leads nowhere is not found.
bool IsFound(FolderNames::Item& item) {
    if (item.mKind != FolderNames::Kind::Link) return true;
    const std::string path = host::UTF16to8(item.mPath);
    const ItemKind kind = ResolveKind(path, ItemKind::Link);
    const bool isNamedAsProject = host::IsVantorProjectFile(item.mPath);
    const bool isItem = kind == ItemKind::Folder || (kind == ItemKind::File && isNamedAsProject);
    if (kind == ItemKind::Folder && isNamedAsProject) item.mPath += u'/';
    return isItem && !IsHiddenName(std::string_view(path).substr(path.rfind('/') + 1), kind);
}

/// What a run of folders has.
struct Part {
    std::size_t mBegin = 0;
    std::size_t mEnd = 0;
    host::UTF16StringVec mHits;
    host::UTF16StringVec mNotAwaitedWithHits;

    void Scan(const std::vector<const KnownNames*>& folders, const FoldedText& text) {
        std::vector<FolderNames::Item> found;
        for (std::size_t i = mBegin; i < mEnd; ++i) {
            found.clear();
            folders[i]->mNames->Find(text, found);
            const std::size_t before = mHits.size();
            for (FolderNames::Item& item : found)
                if (IsFound(item)) mHits.push_back(std::move(item.mPath));
            if (mHits.size() > before && folders[i]->mFollowing < KnownNames::Following::Awaited)
                mNotAwaitedWithHits.push_back(folders[i]->mNames->Folder());
        }
    }
};

std::vector<Part> Divide(const std::vector<const KnownNames*>& folders) {
    std::vector<Part> parts(1);
    std::size_t bytes = 0;
    for (const KnownNames* folder : folders) {
        ++parts.back().mEnd;
        bytes += folder->mNames->CountBytes();
        if (bytes < kBytesPerThread) continue;
        bytes = 0;
        parts.push_back(
            {.mBegin = parts.back().mEnd, .mEnd = parts.back().mEnd, .mHits = {}, .mNotAwaitedWithHits = {}});
    }
    return parts;
}

}  // namespace

NameScanResult ScanNames(const host::UTF16String& root, const std::vector<KnownNames>& known,
                         const FoldedText& text) {
    Tree tree(root, known);
    NameScanResult result;
    result.mUnknown = std::move(tree.mUnknown);
    for (const KnownNames* folder : tree.mKnown) {
        if (folder->mFollowing == KnownNames::Following::NotAsked)
            result.mNotFollowed.push_back(folder->mNames);
        if (folder->mSystemError != 0)
            result.mUnreadable.push_back({folder->mNames->Folder(), folder->mSystemError});
    }
    std::vector<Part> parts = Divide(tree.mKnown);
    RunShared(parts.size(), [&](std::size_t index) { parts[index].Scan(tree.mKnown, text); });
    for (Part& part : parts) {
        std::ranges::move(part.mHits, std::back_inserter(result.mHits));
        std::ranges::move(part.mNotAwaitedWithHits, std::back_inserter(result.mNotAwaitedWithHits));
    }
    return result;
}

}  // namespace desk
