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
    void CreateFolder(const std::string& path, unsigned mode) override { mTarget.CreateFolder(path, mode); }
    void RenameNew(const std::string& from, const std::string& to) override { mTarget.RenameNew(from, to); }
    desk::ItemStatus CopyFile(const std::string& from, const std::string& to, bool isFlushed,
                              const desk::CopyStep& step) override {
        return mTarget.CopyFile(from, to, isFlushed, step);
    }
    void CopyLink(const std::string& from, const std::string& to) override { mTarget.CopyLink(from, to); }
    void CopyFolderAttributes(const std::string& from, const std::string& to) override {
        mTarget.CopyFolderAttributes(from, to);
    }
    void RemoveFromTree(const std::string& root, const std::string& below, bool isFolder) override {
        mTarget.RemoveFromTree(root, below, isFolder);
    }
    void TryToChangeFolder(const std::string& path) override { mTarget.TryToChangeFolder(path); }
    void MakeFolderChangeable(const std::string& path) override { mTarget.MakeFolderChangeable(path); }
    void FlushFolder(const std::string& path) override { mTarget.FlushFolder(path); }
    void FlushVolume(const std::string& path) override { mTarget.FlushVolume(path); }
    std::string ResolveLinks(const std::string& path) override { return mTarget.ResolveLinks(path); }
    long VolumeType(const std::string& path) override { return mTarget.VolumeType(path); }

private:
    desk::FileSystem& mTarget;
};
