#pragma once

#include "desk/project/document/OpenProjectList.h"

/// A project that a test has opened; no file needs to be there. UI thread.
class TestProject final : public desk::OpenProject {
public:
    explicit TestProject(host::UTF16String path) : mPath(std::move(path)) {}
    host::UTF16String GetProjectPath() const override { return mPath; }
    void SetProjectPath(const host::UTF16String& path) override { mPath = path; }
    bool IsDirty() const override { return mIsDirty; }
    void SetProjectLockFile(const host::ProjectLockFileRef& lockFile) override { mLockFile = lockFile; }
    bool IsReadOnly() const override { return mIsReadOnly; }
    bool IsOutOfDate() const override { return mIsOutOfDate; }

    bool mIsReadOnly = false, mIsOutOfDate = false, mIsDirty = false;
    host::ProjectLockFileRef mLockFile;

private:
    host::UTF16String mPath;
};
