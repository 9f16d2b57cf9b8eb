#pragma once

#include "desk/core/edges/FileSystem.h"

namespace desk {

/// The real edge to the disk: POSIX calls, and Linux's own where POSIX has none (getdents64, statx,
/// renameat2).
class ZUHOST_API PosixFileSystem : public FileSystem {
public:
    std::vector<FolderEntry> ListFolder(const std::string& path) override;
    void TryFolder(const std::string& path) override;
    ItemStatus Status(const std::string& path, bool followLink) override;
    std::string ReadSmallFile(const std::string& path, std::size_t limit) override;
    void AppendToFile(const std::string& path, const std::string& bytes) override;
    void CreateNewFile(const std::string& path, const std::string& bytes, unsigned mode) override;
    void Link(const std::string& from, const std::string& to) override;
    void RemoveFile(const std::string& path) override;
    void CreateFolder(const std::string& path, unsigned mode) override;
    void RenameNoReplace(const std::string& from, const std::string& to) override;
    void Rename(const std::string& from, const std::string& to) override;
    ItemStatus CopyFile(const std::string& from, const std::string& to, bool isFlushed,
                        const CopyStep& step) override;
    void CopyLink(const std::string& from, const std::string& to) override;
    void CopyFolderAttributes(const std::string& from, const std::string& to) override;
    void RemoveFromTree(const std::string& root, const std::string& below, bool isFolder) override;
    void TryToChangeFolder(const std::string& path) override;
    void MakeFolderChangeable(const std::string& path) override;
    void FlushFolder(const std::string& path) override;
    void FlushVolume(const std::string& path) override;
    std::string ResolveLinks(const std::string& path) override;
    long VolumeType(const std::string& path) override;
    bool WaitForCaches(const std::string& path) noexcept override;
};

}  // namespace desk
