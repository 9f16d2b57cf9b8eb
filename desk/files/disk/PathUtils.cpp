#include "host/files/PathUtils.h"

#include <map>
#include <optional>
#include <string_view>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/ListedFolder.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/live/KnownFacts.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"

namespace host::PathUtils {

namespace {

constexpr char16_t kSeparator = u'/';

/// Where the last component begins.
std::size_t BeginOfLastComponent(std::u16string_view path) {
    std::size_t slash = path.rfind(kSeparator);
    return slash == std::u16string_view::npos ? 0 : slash + 1;
}

bool IsNormalized(std::u16string_view path) {
    if (path == u"/" || path.empty()) return true;
    if (path.back() == kSeparator) return false;
    for (std::size_t begin = path.front() == kSeparator ? 1 : 0; begin <= path.size();) {
        std::size_t end = std::min(path.find(kSeparator, begin), path.size());
        std::u16string_view component = path.substr(begin, end - begin);
        if (component.empty() || component == u"." || component == u"..") return false;
        begin = end + 1;
    }
    return true;
}

/// Takes the last component of `path` away, but no ".." and nothing from the root. False when nothing could
/// be taken.
bool RemoveLastComponent(UTF16String& path) {
    std::size_t begin = BeginOfLastComponent(path);
    if (begin == path.size() || path.compare(begin, UTF16String::npos, u"..") == 0) return false;
    path.resize(begin > 1 ? begin - 1 : begin);
    return true;
}

void AppendComponent(UTF16String& path, std::u16string_view component) {
    if (!path.empty() && path.back() != kSeparator) path += kSeparator;
    path += component;
}

}  // namespace

UTF16String ToNormalizedPath(const UTF16String& path) {
    if (IsNormalized(path)) return path;
    const bool isAbsolute = path.front() == kSeparator;
    UTF16String result;
    result.reserve(path.size());
    if (isAbsolute) result = kSeparator;
    std::u16string_view rest = path;
    while (!rest.empty()) {
        std::size_t end = std::min(rest.find(kSeparator), rest.size());
        std::u16string_view component = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (component.empty() || component == u".") continue;
        if (component == u"..") {
            if (RemoveLastComponent(result) || isAbsolute) continue;
        }
        AppendComponent(result, component);
    }
    if (result.empty()) result = u".";
    return result;
}

UTF16String CombinePaths(const UTF16String& folder, const UTF16String& name) {
    if (folder.empty()) return name;
    UTF16String result;
    result.reserve(folder.size() + 1 + name.size());
    result = folder;
    if (result.back() != kSeparator) result += kSeparator;
    return result += name;
}

UTF16String AddTrailingSlash(const UTF16String& path) {
    if (path.empty()) return path;
    std::size_t size = path.find_last_not_of(kSeparator);
    UTF16String result = size == UTF16String::npos ? UTF16String() : path.substr(0, size + 1);
    return result += kSeparator;
}

UTF16String RemoveTrailingSlash(const UTF16String& path) {
    return path.size() > 1 && path.back() == kSeparator ? path.substr(0, path.size() - 1) : path;
}

UTF16String GetFilePart(const UTF16String& path) {
    std::u16string_view name = std::u16string_view(path).substr(BeginOfLastComponent(path));
    std::size_t dot = name.rfind(u'.');
    if (dot != 0 && dot != std::u16string_view::npos) name = name.substr(0, dot);
    return UTF16String(name);
}

UTF16String GetFullFilePart(const UTF16String& path) {
    return path.substr(BeginOfLastComponent(path));
}

UTF16String GetFullDirectoryPart(const UTF16String& path) {
    return path.substr(0, BeginOfLastComponent(path));
}

char16_t GetPathSeparator() {
    return kSeparator;
}

namespace {

PathKind ToPathKind(desk::ItemKind kind) {
    return kind == desk::ItemKind::Folder ? PathKind::Folder : PathKind::File;
}

/// Listings of the folders of which so much is asked that a listing costs less. On a worker.
class Listings {
public:
    explicit Listings(const std::vector<std::string>& paths) {
        constexpr std::size_t kWorthAListing = 8;
        std::map<std::string, std::size_t> counts;
        for (const std::string& path : paths) ++counts[desk::FolderOf(path)];
        for (const auto& [folder, count] : counts)
            if (count >= kWorthAListing) Add(folder);
    }

    /// Absent when nothing stands there; `Unknown` when the volume is to be asked.
    std::optional<desk::ItemKind> Find(const std::string& path) const {
        const auto listed = mFolders.find(desk::FolderOf(path));
        return listed == mFolders.end() ? desk::ItemKind::Unknown : listed->second.Find(desk::NameOf(path));
    }

private:
    void Add(const std::string& folder) {
        try {
            mFolders.emplace(folder, desk::ListedFolder(*desk::GetServices().mFileSystem, folder));
        } catch (const FileException&) {
            // Some folders can be entered, but not listed.
        }
    }

    std::map<std::string, desk::ListedFolder> mFolders;
};

/// On a worker.
PathKind FindKindOnDisk(const std::string& path, std::optional<desk::ItemKind> listed) {
    if (!listed) return PathKind::Nothing;
    desk::FileSystem& disk = *desk::GetServices().mFileSystem;
    PathKind kind = PathKind::Nothing;
    try {
        if (*listed == desk::ItemKind::Unknown) listed = disk.Status(path, false).mKind;
        kind = ToPathKind(*listed);
        if (*listed == desk::ItemKind::Link) kind = ToPathKind(disk.Status(path, true).mKind);
    } catch (const FileException&) {
        // A link that leads nowhere is a file.
    }
    return kind;
}

/// On a worker.
std::vector<PathKind> FindKindsOnDisk(const std::vector<std::string>& paths) {
    std::vector<PathKind> kinds(paths.size());
    const Listings listings(paths);
    desk::RunShared(paths.size(), [&](std::size_t index) {
        kinds[index] = FindKindOnDisk(paths[index], listings.Find(paths[index]));
    });
    return kinds;
}

}  // namespace

bool IsDirectory(const UTF16String& path) {
    desk::KnownItem known = desk::FindKnownItem(path);
    if (known.mFacts && known.mFacts->mKind == desk::ItemKind::Unknown)
        known = desk::FindKnownItemAndRequest(path);
    if (known.mFacts) return known.mFacts->mKind == desk::ItemKind::Folder;
    if (known.mIsAbsent) return false;
    try {
        return desk::GetServices().mFileSystem->Status(UTF16to8(path), true).mKind == desk::ItemKind::Folder;
    } catch (const FileException&) {
        return false;
    }
}

bool IsKnownDirectory(const UTF16String& path) {
    const desk::KnownItem known = desk::FindKnownItem(path);
    return known.mFacts && known.mFacts->mKind == desk::ItemKind::Folder;
}

bool ExistsOnDisk(const UTF16String& path, bool followLink) {
    desk::KnownItem known = desk::FindKnownItem(path);
    if (known.mIsAbsent) return false;
    // Of a link whose target is not known the store can only say that the link itself is there.
    if (known.mFacts && (!followLink || known.mFacts->mKind != desk::ItemKind::Unknown)) return true;
    try {
        desk::GetServices().mFileSystem->Status(UTF16to8(path), followLink);
        return true;
    } catch (const FileException&) {
        return false;
    }
}

std::vector<PathKind> GetKinds(const UTF16StringVec& paths) {
    std::vector<PathKind> kinds(paths.size(), PathKind::Nothing);
    std::vector<std::size_t> unknown;
    std::vector<std::string> unknownPaths;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const desk::KnownItem known = desk::FindKnownItem(paths[i]);
        const bool isKnown = known.mFacts && known.mFacts->mKind != desk::ItemKind::Unknown;
        if (isKnown) kinds[i] = ToPathKind(known.mFacts->mKind);
        if (isKnown || known.mIsAbsent) continue;
        unknown.push_back(i);
        unknownPaths.push_back(UTF16to8(paths[i]));
    }
    if (unknown.empty()) return kinds;
    const auto title =
        ZString("$$$/Vantor/Desk/Files/Checking=Checking “@0”", {GetFullFilePart(paths[unknown.front()])});
    const std::vector<PathKind> found =
        desk::AskVolume(title, "read status of", paths[unknown.front()],
                        [unknownPaths] { return FindKindsOnDisk(unknownPaths); });
    for (std::size_t i = 0; i < unknown.size(); ++i) kinds[unknown[i]] = found[i];
    return kinds;
}

}  // namespace host::PathUtils
