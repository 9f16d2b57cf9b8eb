#include <QtWidgets>

#include "desk/core/settings/Directories.h"
#include "host/core/DirectoryRegistry.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

class RememberedViewTest : public PanelFixture {
protected:
    RememberedViewTest() {
        desk::RegisterDirectory(DirectoryRegistry::kUserProfile, UTF8to16(mFolder.MakeFolder("profile")));
        OpenProductionWith({"Reel 1", "Reels/Reel 2", "Sound/Mix"});
    }
    ~RememberedViewTest() override {
        ClosePanel();
        desk::RegisterDirectory(DirectoryRegistry::kUserProfile, {});
    }

    UI_MultiColumnTreeHeaderRow& Header() { return *DirectoryView().GetHeaderRow(); }
    float RowHeight() { return Tree()->GetRowHeight(); }

    /// Everything about the panel but its rows.
    void ChangeView() {
        Send(30323);
        Header().MoveColumn(Columns::kSizeColumnID, 1, true);
        TreeWidget().header()->resizeSection(0, 290);
        Header().SetSortColumn(Columns::kModifiedDateColumnID);
        Header().SetSortDirection(false);
        TypeSearch(QStringLiteral("reel"));
    }
    void ExpectChangedView() {
        EXPECT_FLOAT_EQ(RowHeight(), 36.25f);
        EXPECT_EQ(mFrame.Window().findChild<QSlider*>()->value() * 4,
                  mFrame.Window().findChild<QSlider*>()->maximum());
        EXPECT_EQ(Header().GetIndexOfColumn(Columns::kSizeColumnID), 1);
        EXPECT_FLOAT_EQ(Header().GetColumnWidth(Columns::kNameColumnID), 290);
        EXPECT_EQ(Header().GetSortColumn(), Columns::kModifiedDateColumnID);
        EXPECT_FALSE(Header().IsSortDirectionAscending());
        EXPECT_EQ(SearchField()->text(), QStringLiteral("reel"));
        EXPECT_EQ(ShownHits(), (Rows{"Reel 1", "Reels", "  Reel 2"}));
        EXPECT_EQ(SearchView().GetHeaderRow()->GetIndexOfColumn(Columns::kSizeColumnID), 1);
        Send(30324);
        EXPECT_FLOAT_EQ(Header().GetColumnWidth(Columns::kNameColumnID), 200) << "the width without zoom";
        Send(30323);
    }
    void ExpectFreshView() {
        EXPECT_EQ(RowHeight(), 25);
        EXPECT_EQ(Header().GetIndexOfColumn(Columns::kSizeColumnID), 4);
        EXPECT_TRUE(SearchField()->text().isEmpty());
    }

    void ExpectChangedViewAfter(const char* logged) {
        {
            ExpectLogged log(logged);
            ClosePanel();
        }
        OpenPanel();
        ExpectChangedView();
    }

    JSONMemberTexts Layouts() { return ParseLayouts(mFolder.Read(kFile)); }
    void WriteLayouts(const JSONMemberTexts& layouts) { mFolder.Write(kFile, FormatLayouts(layouts)); }
    UTF16String Entry(const std::string& production) { return Layouts()[mFolder.Path(production)]; }

    static constexpr char kFile[] = "profile/Production Panel Settings";
};

TEST_F(RememberedViewTest, EachProductionHasItsOwn) {
    ChangeView();
    CloseProduction();
    EXPECT_FALSE(Entry(kProduction).empty());
    ClosePanel();
    OpenProduction("South Shore");
    ExpectFreshView();
    OpenProduction(kProduction);
    ExpectChangedView();
    OpenProduction("South Shore");
    ExpectFreshView();
    CloseProduction();
    ClosePanel();
    EXPECT_EQ(Layouts().size(), 2u) << "nothing is remembered of no production";
}

TEST_F(RememberedViewTest, ASaveLeavesWhatOtherProgramsHaveWritten) {
    ClosePanel();
    JSONMemberTexts layouts = Layouts();
    OpenPanel();
    // Meanwhile:
    layouts["/Volumes/East"] = u"{\"mZoom\": 0.5, \"mNewer\": [1, {\"x\": 1.5}], \"mSearchText\": \"a\"}";
    layouts["/Volumes/West"] = u"[\"a later version's\"]";
    WriteLayouts(layouts);
    ChangeView();
    ClosePanel();
    layouts[mFolder.Path(kProduction)] = Entry(kProduction);
    EXPECT_EQ(Layouts(), layouts);
    OpenPanel();
    ExpectChangedView();
}

TEST_F(RememberedViewTest, ASettingsFileThatCannotBeReadOrWrittenIsNeverReplaced) {
    ChangeView();
    mFolder.Write(kFile, "no settings");
    ExpectChangedViewAfter("half a UTF-16 unit");
    EXPECT_EQ(mFolder.Read(std::string(kFile) + ".unreadable-1"), "no settings");
    // Larger than anything that is read.
    std::filesystem::resize_file(mFolder.Path(kFile), 300'000'000);
    ExpectChangedViewAfter("it is larger than");
    EXPECT_EQ(std::filesystem::file_size(mFolder.Path(std::string(kFile) + ".unreadable-2")), 300'000'000u);

    mFolder.Rename(kFile, "elsewhere");
    std::filesystem::create_symlink("../elsewhere", mFolder.Path(kFile));
    ExpectChangedViewAfter("symbolic link");

    const std::string before = mFolder.Read(kFile);
    Send(30323);
    {
        ExpectLogged log("No space left");
        mDisk.Fail(Operation::CreateNewFile, 1, ENOSPC);
        CloseProduction();
    }
    EXPECT_EQ(mFolder.Read(kFile), before);
    OpenProduction("South Shore");
    CloseProduction();
    EXPECT_NE(Entry(kProduction).find(u"\"mZoom\":0.5"), UTF16String::npos) << "with the next save";

    {
        ExpectLogged log("Permission denied");
        mDisk.Deny(mFolder.Path(kFile));
        OpenProduction(kProduction);
        ClosePanel();
        mDisk.Allow(mFolder.Path(kFile));
    }
    OpenPanel();
    EXPECT_FLOAT_EQ(RowHeight(), 47.5f);

    for (const int failures : {1, 2}) {
        ExpectLogged log("Input/output error");
        const std::string file = mFolder.Read(kFile);
        Send(30324);
        for (int i = 1; i <= failures; ++i) mDisk.Fail(Operation::CreateNewFile, i, EIO);
        ClosePanel();
        EXPECT_EQ(mFolder.Read(kFile) != file, failures == 1) << "tried twice";
        OpenPanel();
        EXPECT_FLOAT_EQ(RowHeight(), 47.5f - 11.25f * static_cast<float>(failures)) << "kept beyond the panel";
    }
}

}  // namespace HandlerSharedProjects
