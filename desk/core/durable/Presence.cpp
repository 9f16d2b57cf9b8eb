#include "desk/core/durable/Presence.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <unordered_set>
#include <utility>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

Presence LookByName(FileSystem& fileSystem, const std::string& path) {
    try {
        fileSystem.Status(path, false);
        return Presence::There;
    } catch (const host::FileException& exception) {
        return exception.SystemError() == ENOENT ? Presence::Gone : Presence::NotTold;
    }
}

/// Lists each folder once.
class Listings {
public:
    explicit Listings(FileSystem& fileSystem) : mFileSystem(fileSystem) {}

    Presence Look(const std::string& path) {
        const std::string folder = FolderOf(path);
        auto found = mNames.find(folder);
        if (found == mNames.end()) found = mNames.emplace(folder, List(folder)).first;
        if (!found->second) return Presence::NotTold;
        return found->second->contains(NameOf(path)) ? Presence::There : Presence::Gone;
    }

private:
    using Names = std::unordered_set<std::string>;

    std::optional<Names> List(const std::string& folder) const {
        try {
            Names names;
            for (FolderEntry& entry : mFileSystem.ListFolder(folder)) names.insert(std::move(entry.mName));
            return names;
        } catch (const host::FileException&) {
            return std::nullopt;
        }
    }

    FileSystem& mFileSystem;
    std::map<std::string, std::optional<Names>> mNames;
};

struct Look {
    Presence mByName;
    Presence mInListing;
    bool IsClear() const { return mByName == mInListing; }
};

std::vector<Look> LookAt(FileSystem& fileSystem, const std::vector<std::string>& paths) {
    std::vector<Look> looks;
    Listings listings(fileSystem);
    for (const std::string& path : paths) looks.push_back({LookByName(fileSystem, path), listings.Look(path)});
    return looks;
}

Presence Decide(const Look& first, const Look& second) {
    return first.mInListing == second.mInListing ? second.mInListing : Presence::NotTold;
}

}  // namespace

std::vector<Presence> FindPresence(FileSystem& fileSystem, const std::vector<std::string>& paths) {
    std::vector<Presence> found(paths.size(), Presence::NotTold);
    if (paths.empty() || !fileSystem.WaitForCaches(FolderOf(paths.front()))) return found;
    const std::vector<Look> first = LookAt(fileSystem, paths);
    std::vector<Look> second = first;
    if (!std::ranges::all_of(first, &Look::IsClear)) {
        fileSystem.WaitForCaches(FolderOf(paths.front()));
        second = LookAt(fileSystem, paths);
    }
    std::ranges::transform(first, second, found.begin(), Decide);
    return found;
}

Presence FindPresence(FileSystem& fileSystem, const std::string& path) {
    return FindPresence(fileSystem, std::vector{path}).front();
}

void ThrowIfTaken(FileSystem& fileSystem, std::string_view operation, const std::string& path) {
    try {
        fileSystem.Status(path, false);
    } catch (const host::FileException& exception) {
        if (exception.SystemError() == ENOENT) return;
        throw;
    }
    ThrowFileException(operation, path, EEXIST);
}

bool IsListed(FileSystem& fileSystem, const std::string& path) {
    const std::string name = NameOf(path);
    const auto entries = fileSystem.ListFolder(FolderOf(path));
    return std::ranges::find(entries, name, &FolderEntry::mName) != entries.end();
}

bool DoesHold(FileSystem& fileSystem, const std::string& path, const std::string& bytes) {
    try {
        return fileSystem.ReadSmallFile(path, bytes.size()) == bytes;
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
        return false;
    }
}

bool IsRefusal(int systemError) {
    switch (systemError) {
        case EACCES:
        case EPERM:
        case EROFS:
        case ENOSPC:
        case EDQUOT:
        case ENAMETOOLONG:
        case EXDEV:
        case EINVAL:
        case ENOSYS:
        case EOPNOTSUPP:
        case EMLINK:
        case ENOTEMPTY:
        case EISDIR:
        case ENOTDIR:
        case ELOOP:
        case EFBIG:
        case ECANCELED:
            return true;
        default:
            return false;
    }
}

}  // namespace desk
