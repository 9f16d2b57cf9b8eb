#pragma once

#include "desk/files/FileSystem.h"

/// Hands every operation on to another file system; a fault is one override.
class ForwardingFileSystem : public desk::FileSystem {
public:
    /// `target` is not owned.
    explicit ForwardingFileSystem(desk::FileSystem& target) : mTarget(target) {}

    std::vector<desk::FolderEntry> ListFolder(const std::string& path) override { return mTarget.ListFolder(path); }
    void TryFolder(const std::string& path) override { mTarget.TryFolder(path); }
    desk::ItemStatus Status(const std::string& path, bool followLink) override {
        return mTarget.Status(path, followLink);
    }
    std::string ReadSmallFile(const std::string& path, std::size_t limit) override {
        return mTarget.ReadSmallFile(path, limit);
    }
    void ReplaceFile(const std::string& path, const std::string& bytes) override { mTarget.ReplaceFile(path, bytes); }
    void AppendToFile(const std::string& path, const std::string& bytes) override {
        mTarget.AppendToFile(path, bytes);
    }
    void CreateNewFile(const std::string& path, const std::string& bytes, unsigned mode) override {
        mTarget.CreateNewFile(path, bytes, mode);
    }
    void Link(const std::string& from, const std::string& to) override { mTarget.Link(from, to); }
    void RemoveFile(const std::string& path) override { mTarget.RemoveFile(path); }
    void CreateFolder(const std::string& path) override { mTarget.CreateFolder(path); }
    void RenameNew(const std::string& from, const std::string& to) override { mTarget.RenameNew(from, to); }
    long VolumeType(const std::string& path) override { return mTarget.VolumeType(path); }

private:
    desk::FileSystem& mTarget;
};
