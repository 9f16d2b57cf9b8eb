#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/project/LockProtocol.h"
#include "desk/project/LockRecord.h"
#include "desk/project/ProjectDocuments.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/TemporaryFolder.h"

/// Cancels whatever is asked, and counts it.
class CancellingDialogs : public ScriptedDialogs {
public:
    void ShowMessage(const host::UTF16String&, const host::UTF16String&) override { ++mCount; }
    desk::Answer Ask(const desk::Question& question) override {
        ++mCount;
        return {question.mCancel, false};
    }
    int mCount = 0;
};

/// A document manager on a folder with projects, with editors that the test types in, and another user.
class ProjectDocumentsFixture : public testing::Test {
protected:
    using Operation = FaultyFileSystem::Operation;

    static constexpr char kProject[] = "Day 1/Reel 1.zuproj";
    static constexpr char kLock[] = "Day 1/.Reel 1.zuproj.lock";
    static constexpr char kBytes[] = "one\r\ntwo\nthree";

    ProjectDocumentsFixture() {
        mFolder.Write(kProject, kBytes);
        desk::GetServices().mWorkerPool = &mPool;
        mManager.emplace();
    }
    ~ProjectDocumentsFixture() override {
        mManager.reset();
        mMainThread.RunUntilIdle();
        desk::GetServices().mWorkerPool = nullptr;
        EXPECT_EQ(CountHidden(), 0) << "a lock or a temporary file is left";
    }

    desk::ProjectDocuments& Manager() { return *mManager; }
    bool Open(std::string_view project = kProject) { return Manager().OpenProject(mFolder.PathUTF16(project)); }
    /// Empty when it is not open.
    desk::ProjectDocumentRef Find(std::string_view project = kProject) {
        host::ProjectRef found;
        host::IsProjectOpen(mFolder.PathUTF16(project), found);
        return desk::ToDocument(found);
    }
    desk::ProjectDocumentRef OpenAndFind(std::string_view project = kProject) {
        EXPECT_TRUE(Open(project));
        desk::ProjectDocumentRef document = Find(project);
        if (!document) throw std::runtime_error("the project is not open");
        return document;
    }
    /// The editor shows `text` from now on.
    static void Edit(const desk::ProjectDocumentRef& document, const host::UTF16String& text) {
        document->SetTextSource([text] { return text; });
        document->SetDirty(true);
    }
    void WriteForeignLock(std::string_view lock = kLock) {
        desk::LockRecord record = desk::MakeLockRecord(mDesktop, u"tomas", u"edit-bay-2");
        record.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
        mFolder.Write(lock, WriteLockRecord(record));
    }
    bool AsksFor(const char* part) const { return mDialogs.LastText().find(part) != std::string::npos; }
    /// Lock files and temporary files that are not the other user's.
    int CountHidden() {
        int count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(mFolder.Path())) {
            const std::string name = entry.path().filename().string();
            if (!name.starts_with('.') || !entry.is_regular_file()) continue;
            const std::string path = entry.path().string().substr(mFolder.Path().size() + 1);
            count += desk::ParseLockRecord(mFolder.Read(path)).mUser != u"tomas";
        }
        return count;
    }

    TemporaryFolder mFolder;
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    ManualMainThread mMainThread;
    ScriptedDialogs mDialogs;
    desk::WorkerPool mPool{2};
    std::optional<desk::ProjectDocuments> mManager;
};
