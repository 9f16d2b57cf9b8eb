#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/PictureImpl.h"
#include "host/toolkit/Bitmap.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects::Columns {

using ColumnsTest = PanelFixture;

TEST_F(ColumnsTest, UpdateReadsAllFactsOrThatOfOneColumn) {
    MakeProject("Show", std::string(1234, 'x'));
    OtherUserLocks("Show");
    FileMetadata record(PathOf("Show.zuproj"));
    EXPECT_TRUE(record.Update(false, kSizeColumnID) && !record.Update(false, kSizeColumnID));
    EXPECT_EQ(record.mSize, 1234u);
    EXPECT_FALSE(record.mLocked || record.mModified);
    record.Update(true, kNameColumnID);
    EXPECT_EQ(record.GetColumnDisplayString(kLockedColumnID), u"edit-bay-2");
    EXPECT_NE(record.GetColumnDisplayString(kModifiedDateColumnID), u"");
    // A file that the volume will not tell about, or that is gone, keeps its last known facts.
    MakeProject("Show", "changed");
    {
        ExpectLogged log("read status");
        mDisk.Deny(mFolder.Path(OnDisk("Show.zuproj")), EIO);
        record.Update(true, kNameColumnID);
    }
    EXPECT_EQ(record.mSize, 1234u);
    mDisk.Allow(mFolder.Path(OnDisk("Show.zuproj")));
    RemoveProject("Show");
    record.Update(true, kNameColumnID);
    EXPECT_EQ(record.mSize, 1234u);
    EXPECT_TRUE(record.mModified);
}

TEST_F(ColumnsTest, NumbersOrderProjectsAsTheirKeysDo) {
    std::vector<KnownProject> projects(1);
    for (const std::uint64_t fact : {0ull, 9ull, 10ull, 1'700'000'000ull})
        projects.push_back({true, std::time_t(fact), std::time_t(fact) + 1, fact, {}});
    for (const ColumnID column : {kModifiedDateColumnID, kCreationDateColumnID, kSizeColumnID})
        for (const KnownProject& a : projects)
            for (const KnownProject& b : projects)
                EXPECT_EQ(GetSortNumber(a, column) < GetSortNumber(b, column),
                          SortStringIsLess(FileMetadata(u"/a", a).GetColumnDataAsSortableString(column),
                                           FileMetadata(u"/b", b).GetColumnDataAsSortableString(column)));
}

/// Cells of a shown production.
class CellsTest : public PanelFixture {
protected:
    UI_Container* NameCell(const std::string& name) {
        return RowOf(name)->GetCellView(
            static_cast<unsigned>(DirectoryView().GetHeaderRow()->GetIndexOfColumn(kNameColumnID)));
    }
    UI_Container& NameView(const std::string& name) {
        EXPECT_EQ(NameCell(name)->GetChildren().size(), 1u);
        return dynamic_cast<UI_Container&>(*NameCell(name)->GetChildren().at(0));
    }
    /// The picture that the row's icon shows.
    std::string Icon(const std::string& name) {
        auto& image = dynamic_cast<UI_StaticImage&>(*NameView(name).GetChildren().at(0));
        UI_ImageSupplyMessage message;
        static_cast<desk::StaticImageImpl&>(image.GetImpl()).mSupply(message);
        EXPECT_EQ(message.GetStateFlags(), kImageStateEnabled);
        if (message.GetBitmap().IsValid()) return message.GetBitmap().GetPicture()->mName;
        return message.GetPicture() ? "a folder" : "nothing";
    }
    UI_StaticText& Label(const std::string& name) {
        return dynamic_cast<UI_StaticText&>(*NameView(name).GetChildren().at(1));
    }
    static std::string PictureOf(const char* decal) {
        return Bitmap::GetBitmap(decal, GetDefaultDrawSupplier()).GetPicture()->mName;
    }
};

TEST_F(CellsTest, SevenIconsAndTheSameInWords) {
    Make({"Folder/", "Trash/"});
    for (const char* name : {"closed", "closed locked", "closed ours", "open", "open locked", "open ours"})
        MakeProject(name);
    OtherUserLocks("closed locked");
    OtherUserLocks("open locked");
    WeLock("closed ours");
    WeLock("open ours");
    OpenProduction();
    OpenProject("open");
    OpenProject("open locked", true, true);
    const auto ours = OpenProject("open ours");
    Settle();
    EXPECT_EQ(Icon("Folder"), "a folder");
    const std::pair<const char*, const char*> expected[] = {
        {"Trash", kHistoryActionDeleteDecal},
        {"closed", kZuProductionPanelProjectClosedNoLockDecal},
        {"closed locked", kZuProductionPanelProjectClosedLockedDecal},
        {"closed ours", kZuProductionPanelProjectClosedLockedDecal},
        {"open", kZuProductionPanelProjectOpenNoLockDecal},
        {"open locked", kZuProductionPanelProjectOpenLockedDecal},
        {"open ours", kZuProductionPanelProjectOpenEditableDecal}};
    for (const auto& [name, decal] : expected) EXPECT_EQ(Icon(name), PictureOf(decal)) << name;
    dynamic_cast<TestProject&>(*ours).mIsDirty = true;
    desk::OpenProjectList::Instance().AnnounceReadOnlyState(ours);
    EXPECT_EQ(Label("open ours").GetValue(), u"open ours •");
    EXPECT_EQ(Label("open locked").GetFontStyle(), "Italic");
    EXPECT_EQ(Label("open").GetFontStyle(), "");
    for (const char* says :
         {"Folder, folder", "Trash, trash", "open, open", "open ours, open, unsaved changes, locked by ines",
          "open locked, open, read-only, out of date, locked by edit-bay-2"})
        EXPECT_EQ(Says(std::string(says).substr(0, std::string_view(says).find(','))), says);
    EXPECT_EQ(Says("Folder", kLockedColumnID), "");
    EXPECT_EQ(Says("open", kLockedColumnID), "Not locked");
    desk::OpenProjectList::Instance().Remove(ours);
    Settle();
    EXPECT_EQ(Icon("open ours"), PictureOf(kZuProductionPanelProjectClosedLockedDecal));
}

TEST_F(CellsTest, NameCellGeometry) {
    OpenProductionWith({"Reel 1"});
    UI_Container& view = NameView("Reel 1");
    view.UI_SetBounds({0, 0, 300, 20});
    EXPECT_EQ(view.GetChildren().at(0)->UI_GetBounds(), (RectT<float>{0, 4, 12, 12}));
    EXPECT_EQ(view.GetChildren().at(1)->UI_GetBounds(), (RectT<float>{22, 0, 278, 20}));
    view.UI_SetBounds({0, 0, 15, 20});
    EXPECT_EQ(view.GetChildren().at(1)->UI_GetBounds().width, 10);
    EXPECT_EQ(GetNameTextRectFromView(NameCell("Reel 1")), Label("Reel 1").UI_GetBounds());
    EXPECT_EQ(GetNameTextRectFromView(nullptr), RectT<float>());
}

}  // namespace HandlerSharedProjects::Columns
