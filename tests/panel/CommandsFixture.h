#pragma once

#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/production/CopyQueue.h"
#include "tests/panel/PanelFixture.h"
#include "tests/support/DiskTree.h"

namespace HandlerSharedProjects {

/// The panel with the host's parts that work on projects and files.
class CommandsFixture : public PanelFixture {
protected:
    static constexpr int kNewFolder = 1296191078, kNewProject = 30303, kAddProject = 30304;
    static constexpr int kOpen = 30305, kClose = 30306, kRefresh = 30307, kRevealRoot = 30309;
    static constexpr int kRevealItem = 30310, kToggleLock = 30311, kMakeACopy = 30319;
    static constexpr int kRefreshAll = 30320, kSaveAll = 30321, kCloseAll = 30322;
    static constexpr int kMoveToTrash = 30325, kCloseAllOthers = 11215;

    UTF16String ProjectPath(const std::string& name) { return PathOf(name + ".zuproj"); }
    UTF16StringVec PathsOf(const std::vector<std::string>& names) {
        UTF16StringVec paths;
        for (const std::string& name : names) paths.push_back(PathOf(name));
        return paths;
    }
    DiskTree OnDiskNow() { return ReadTree(mFolder.Path(mProduction)); }
    std::string Bytes(const std::string& name) { return mFolder.Read(OnDisk(name) + ".zuproj"); }

    /// Opens a project through the document manager.
    desk::ProjectDocumentRef OpenDocument(const std::string& name) {
        EXPECT_TRUE(mDocuments.OpenProject(ProjectPath(name))) << name;
        return FindDocument(name);
    }
    desk::ProjectDocumentRef FindDocument(const std::string& name) {
        ProjectRef project;
        IsProjectOpen(ProjectPath(name), project);
        return desk::ToDocument(project);
    }
    /// As an editor does.
    void Edit(const std::string& name, UTF16String text) {
        const desk::ProjectDocumentRef document = FindDocument(name);
        ASSERT_TRUE(document) << name;
        document->SetTextSource([text = std::move(text)] { return text; });
        document->SetDirty(true);
    }
    bool IsOpen(const std::string& name) { return IsProjectOpen(ProjectPath(name)); }

    struct Status {
        bool mIsKnown = false, mIsEnabled = false;
        UTF16String mText;
    };
    Status StatusOf(int commandID) {
        Status status;
        bool checked = true;
        MenuMark mark = MenuMark::Check;
        CommandHandler& commander = *mTabView;
        status.mIsKnown =
            commander.FindCommandStatus(commandID, status.mIsEnabled, checked, mark, status.mText);
        EXPECT_FALSE(status.mIsKnown && (checked || mark != MenuMark::None)) << commandID;
        return status;
    }
    std::string WhyNot(int commandID) { return UTF16to8(mTabView->DescribeWhyDisabled(commandID)); }
    bool IsEnabled(int commandID) { return StatusOf(commandID).mIsEnabled; }

    desk::CopyQueue mCopies;
    desk::ProjectDocuments mDocuments;
};

}  // namespace HandlerSharedProjects
