#include <gtest/gtest.h>

#include "desk/project/OpenProjectList.h"
#include "desk/project/Production.h"
#include "host/project/ProductionTrash.h"
#include "host/project/SharedProjectsManager.h"
#include "tests/support/TestProject.h"

namespace {

/// Writes down what is announced, and what the host answers meanwhile.
class Notes : public host::Listener {
public:
    explicit Notes(const host::StationID& station) : mStation(station) { host::AddListener(mStation, this); }
    ~Notes() override { host::RemoveListener(mStation, this); }

    void ListenToMessage(const host::Message& message) override {
        if (host::MessageCast<host::ZuProductionFolderOpenedMessage>(message))
            mNotes.push_back(u"opened, open is " + host::GetSharedProjectsManagerFolderPath());
        if (auto* closed = host::MessageCast<host::ZuProductionFolderClosedMessage>(message))
            mNotes.push_back(u"closed " + closed->GetPath() + u", open is " +
                             host::GetSharedProjectsManagerFolderPath());
        if (auto* opened = host::MessageCast<host::ProjectOpenedMessage>(message))
            mNotes.push_back(u"opened " + opened->GetProject()->GetProjectPath() + Count());
        if (auto* closed = host::MessageCast<host::ProjectClosedMessage>(message))
            mNotes.push_back(u"closed " + closed->GetProject()->GetProjectPath() + Count());
        if (auto* changed = host::MessageCast<host::ReadOnlyStateChangedMessage>(message))
            mNotes.push_back(changed->IsReadOnly() ? u"read-only" : u"writable");
    }
    host::UTF16StringVec Take() { return std::exchange(mNotes, {}); }

private:
    static host::UTF16String Count() {
        return u", " + host::NumberToString(static_cast<long long>(host::OpenProjectCount())) + u" open";
    }
    host::StationID mStation;
    host::UTF16StringVec mNotes;
};

class ProductionTest : public testing::Test {
protected:
    ~ProductionTest() override { mProduction.Close(); }
    desk::Production& mProduction = desk::Production::Instance();
};

using Texts = host::UTF16StringVec;

}  // namespace

TEST_F(ProductionTest, OpeningAnotherClosesTheFirstAndTellsBoth) {
    Notes notes(host::kStation_ZuProductionFolderPanel);
    EXPECT_FALSE(host::IsSharedProjectsManagerActive());
    mProduction.Open(u"/vol//north/");
    EXPECT_TRUE(host::IsSharedProjectsManagerActive());
    EXPECT_EQ(notes.Take(), (Texts{u"opened, open is /vol/north"}));
    mProduction.Open(u"/vol/south");
    EXPECT_EQ(notes.Take(), (Texts{u"closed /vol/north, open is ", u"opened, open is /vol/south"}));
    mProduction.Close();
    mProduction.Close();
    EXPECT_EQ(notes.Take(), (Texts{u"closed /vol/south, open is "}));
}

TEST_F(ProductionTest, WhatLiesWithinTheProductionAndItsTrash) {
    using namespace host;
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north/a"));
    EXPECT_EQ(GetZuProductionTrashDirectoryPath(), u"");
    EXPECT_FALSE(IsTheZuProductionTrashDirectory(u""));
    EXPECT_FALSE(IsInZuProductionTrash(u"", true));

    mProduction.Open(u"/vol/north");
    EXPECT_TRUE(IsWithinCurrentZuProductionFolder(u"/vol/north/a"));
    EXPECT_TRUE(IsWithinCurrentZuProductionFolder(u"/vol//south/../north/a/"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north/"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/northern/a"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"/vol/north/../a"));

    const UTF16String trash = u"/vol/north/" + GetZuProductionTrashDirectoryDisplayName();
    EXPECT_EQ(GetZuProductionTrashDirectoryPath(), trash);
    EXPECT_TRUE(IsTheZuProductionTrashDirectory(trash + u"/"));
    EXPECT_FALSE(IsTheZuProductionTrashDirectory(trash + u"/a"));
    EXPECT_TRUE(IsInZuProductionTrash(trash + u"/a/b", false));
    EXPECT_FALSE(IsInZuProductionTrash(trash, false));
    EXPECT_TRUE(IsInZuProductionTrash(trash, true));
    EXPECT_FALSE(IsInZuProductionTrash(trash + u" 2/a", true));
    EXPECT_FALSE(IsInZuProductionTrash(trash + u"/../a", true));

    mProduction.Open(u"/");
    EXPECT_TRUE(IsWithinCurrentZuProductionFolder(u"/a"));
    EXPECT_FALSE(IsWithinCurrentZuProductionFolder(u"//"));
}

TEST_F(ProductionTest, ThePanelsPauseFunctionIsCalledWhileItIsInstalled) {
    std::vector<bool> calls;
    mProduction.PausePanelUpdates(true);
    host::SetSharedProjectsNotifyPauseFn([&](bool pause) { calls.push_back(pause); });
    mProduction.PausePanelUpdates(true);
    mProduction.PausePanelUpdates(false);
    host::SetSharedProjectsNotifyPauseFn({});
    mProduction.PausePanelUpdates(true);
    EXPECT_EQ(calls, (std::vector<bool>{true, false}));
}

TEST(OpenProjects, TheListTellsWhatChangedAfterItHasChanged) {
    Notes notes(host::kBackendProjectActivationStationID);
    auto& list = desk::OpenProjectList::Instance();
    host::RefPtr<TestProject> project = new TestProject(u"/vol/north/a.zuproj");
    list.Add(project);
    list.Add(project);
    EXPECT_EQ(notes.Take(), (Texts{u"opened /vol/north/a.zuproj, 1 open"}));
    host::ProjectRef found;
    EXPECT_TRUE(host::IsProjectOpen(u"/vol/north//a.zuproj", found));
    EXPECT_EQ(found, project);
    EXPECT_FALSE(host::IsProjectOpen(u"/vol/north/A.zuproj", found));
    EXPECT_FALSE(found);

    EXPECT_FALSE(host::Utilities::IsProjectOutOfDate(project));
    project->mIsOutOfDate = true;
    EXPECT_TRUE(host::Utilities::IsProjectOutOfDate(project));
    EXPECT_FALSE(host::Utilities::IsProjectOutOfDate({}));
    project->mIsReadOnly = true;
    list.AnnounceReadOnlyState(project);
    EXPECT_EQ(notes.Take(), (Texts{u"read-only"}));

    list.Remove(list.Get().front());
    list.Remove(project);
    EXPECT_EQ(notes.Take(), (Texts{u"closed /vol/north/a.zuproj, 0 open"}));
}
