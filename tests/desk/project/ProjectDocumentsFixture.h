#pragma once

#include "desk/core/work/WorkProgress.h"
#include "desk/project/document/ProjectDocuments.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

/// A document manager on a folder with projects, with editors that the test types in, and another user.
class ProjectDocumentsFixture : public HostFixture {
protected:
    static constexpr char kProject[] = "Day 1/Reel 1.zuproj";
    static constexpr char kLock[] = "Day 1/.Reel 1.zuproj.lock";
    static constexpr char kBytes[] = "one\r\ntwo\nthree";

    ProjectDocumentsFixture() {
        mFolder.Write(kProject, kBytes);
        mManager.emplace();
    }
    ~ProjectDocumentsFixture() override {
        mManager.reset();
        mMain.RunUntilIdle();
        EXPECT_EQ(CountHidden(), 0) << "a lock or a temporary file is left";
    }

    desk::ProjectDocuments& Manager() { return *mManager; }
    bool Open(std::string_view project = kProject) { return Manager().OpenProject(mFolder.PathUTF16(project)); }
    /// The user is asked about a lock.
    bool Open(const char16_t* answer, std::string_view project = kProject) {
        mDialogs.ExpectQuestion("Project Locked", answer);
        const bool isOpen = Open(project);
        mMain.RunUntilIdle();
        return isOpen;
    }
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
    /// The user is told under the title `asked`, or asked there and gives `answer`.
    bool Save(const desk::ProjectDocumentRef& document, const char* asked = nullptr,
              const char16_t* answer = nullptr) {
        if (asked) answer ? mDialogs.ExpectQuestion(asked, answer) : mDialogs.ExpectMessage(asked);
        return Manager().SaveProject(document);
    }
    /// The user is asked whether to save.
    bool Close(const desk::ProjectDocumentRef& document, const char16_t* answer) {
        mDialogs.ExpectQuestion("Save Changes", answer);
        return Manager().CloseProject(document, true);
    }
    bool SetReadOnly(const desk::ProjectDocumentRef& document, const char16_t* answer) {
        mDialogs.ExpectQuestion("Save Changes", answer);
        return Manager().SetProjectReadOnly(document, true);
    }
    /// The user cancels all long work from now on.
    void CancelWaiting() {
        mDialogs.mWhileWaiting = [](desk::WorkProgress& progress) { progress.Cancel(); };
    }
    void WriteForeignLock(std::string_view lock = kLock) {
        mFolder.Write(lock, WriteLockRecord(MakeForeignRecord(mDesktop)));
    }
    bool AsksFor(const std::string& part) const { return mDialogs.LastText().find(part) != std::string::npos; }
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

    std::optional<desk::ProjectDocuments> mManager;
};
