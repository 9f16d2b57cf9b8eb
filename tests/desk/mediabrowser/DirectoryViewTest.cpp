#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QTreeView>
#include <QWidget>

#include "desk/toolkit/TreeAccess.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/WidgetContainer.h"
#include "host/files/PathUtils.h"
#include "host/mediabrowser/MediaBrowserDirectoryView.h"
#include "tests/desk/files/FollowedFolder.h"

using host::RowRef;
using host::UTF16String;

namespace {

/// Shows all that is delivered.
class TestView : public host::MediaBrowserDirectoryView {
public:
    explicit TestView(std::shared_ptr<host::MediaBrowserContentManager> manager)
        : MediaBrowserDirectoryView({}, std::move(manager)) {}

    void UpdateTreeFromContent(const RowRef& row, const UTF16String& path,
                               const host::DirectoryContent& content,
                               const host::ContentDelivery& delivery) override {
        mLast = delivery;
        std::set<UTF16String> paths;
        for (const host::PropertyMap& item : content)
            paths.insert(*item.Find<UTF16String>(host::MediaBrowserContentManager::kPathField));
        InsertDirectoryContent(row, paths, delivery, mRoot);
        EXPECT_EQ(row ? GetRowPath(row.get()) : mRoot, path);
    }
    void AddRowToMaps(const RowRef& row, const host::DirectoryRowData& data) override {
        MediaBrowserDirectoryView::AddRowToMaps(row, data);
        EXPECT_TRUE(mInMaps.insert(GetRowPath(row.get())).second);
    }
    void RemoveRowFromMaps(const RowRef& row) override {
        EXPECT_EQ(mInMaps.erase(GetRowPath(row.get())), 1u) << "removed twice, or after its parent";
        MediaBrowserDirectoryView::RemoveRowFromMaps(row);
        EXPECT_EQ(GetRowPath(row.get()), u"");
    }
    bool CanRowHaveChildren(const RowRef& row) const override {
        return !GetRowPath(row.get()).ends_with(u".zuproj");
    }
    bool CanOpenRow(const RowRef& row) const override { return CanRowHaveChildren(row); }
    void OnDirectoryChanged(const UTF16String& path) override {
        ++mChanges;
        MediaBrowserDirectoryView::OnDirectoryChanged(path);
    }
    using MediaBrowserDirectoryView::FindChildRow;

    UTF16String mRoot;
    std::set<UTF16String> mInMaps;
    int mChanges = 0;
    host::ContentDelivery mLast;
};

class DirectoryViewTest : public FollowedFolder {
protected:
    DirectoryViewTest() {
        UseInotify();
        mAppliesChanges = false;
        MakeView();
    }
    ~DirectoryViewTest() override { DropView(); }
    void DropView() {
        if (mView) mContainer->RemoveChild(mView.get());
        mView.reset();
    }

    void MakeView() {
        mView = new TestView(mManager);
        mContainer->AddChild(mView);
        mView->UI_SetBounds({0, 0, 400, 300});
        mView->mRoot = mFolder.PathUTF16();
        QTreeView* tree = desk::GetTreeWidget(*mView->GetTree());
        new QAbstractItemModelTester(tree->model(), QAbstractItemModelTester::FailureReportingMode::Warning,
                                     tree);
        mWindow.resize(400, 300);
        mWindow.show();
        Monitor();
    }
    void ShowRoot() {
        mView->RequestDirectoryContent(mView->mRoot, {}, {});
        Settle();
    }
    void Settle() {
        mMain.Advance(desk::ChangeCollector::kPace);
        CheckConsistent();
    }
    void WaitForRows(const Names& rows) {
        WaitFor([&] { return ShownRows() == rows; });
        ASSERT_EQ(ShownRows(), rows);
        CheckConsistent();
    }
    /// Paths of rows, below the temporary folder.
    Names ShownRows() const {
        Names names;
        for (const RowRef& row : mView->GetTree()->GetOpenedRows())
            names.insert(host::UTF16to8(mView->GetRowPath(row.get())).substr(mFolder.Path().size() + 1));
        return names;
    }
    RowRef Row(const std::string& path) const {
        for (const RowRef& row : mView->GetAllRows())
            if (mView->GetRowPath(row.get()) == Path(path)) return row;
        return {};
    }
    void Open(const std::string& path, bool open = true) {
        host::UI_MultiColumnTreeRow* row = Row(path).get();
        open ? mView->GetTree()->OpenRow(row) : mView->GetTree()->CloseRow(row);
        Settle();
    }
    void Close(const std::string& path) { Open(path, false); }
    void CheckConsistent() const {
        std::set<UTF16String> paths;
        for (const RowRef& row : mView->GetAllRows()) {
            const UTF16String path = mView->GetRowPath(row.get());
            EXPECT_TRUE(paths.insert(path).second) << "two rows for " << host::UTF16to8(path);
            EXPECT_EQ(mView->FindChildRow(row->GetParentRow().get(), host::PathUtils::GetFullFilePart(path)),
                      row);
        }
        EXPECT_EQ(paths, mView->mInMaps);
    }

    QWidget mWindow;
    host::RefPtr<host::UI_Container> mContainer = desk::CreateWidgetContainer(mWindow);
    std::shared_ptr<host::MediaBrowserContentManager> mManager =
        std::make_shared<host::MediaBrowserContentManager>();
    host::RefPtr<TestView> mView;
};

TEST_F(DirectoryViewTest, FollowsChangesKeepsTheRestAndListsWhatIsKnownOnce) {
    for (const char* name : {"A", "B", "C"}) mFolder.Write("Reels/" + std::string(name) + ".zuproj");
    ShowRoot();
    Open("Reels");
    Close("Reels");
    Open("Reels");
    EXPECT_EQ(mDisk.Count(Operation::ListFolder), 2) << "what is known is not listed again";
    const RowRef kept = Row("Reels/B.zuproj");
    mView->GetTree()->SelectRow(kept.get(), true, false, true);
    mFolder.Remove("Reels/A.zuproj");
    mFolder.Rename("Reels/C.zuproj", "Reels/D.zuproj");
    mFolder.Write("E.zuproj");
    WaitForRows({"E.zuproj", "Reels", "Reels/B.zuproj", "Reels/D.zuproj"});
    EXPECT_EQ(Row("Reels/B.zuproj"), kept);
    EXPECT_EQ(mView->GetSelectedPaths(), host::UTF16StringVec{Path("Reels/B.zuproj")});
    mFolder.Remove("Reels");
    WaitForRows({"E.zuproj"});
    EXPECT_TRUE(mView->GetSelectedPaths().empty());
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 1u);
}

TEST_F(DirectoryViewTest, BringsAFolderUpToDateWhenItShowsAgain) {
    mFolder.Write("Reels/Old/A.zuproj");
    ShowRoot();
    Open("Reels");
    Open("Reels/Old");
    Close("Reels");
    mDisk.ResetCounts();
    const int changes = mView->mChanges;
    mFolder.Write("Reels/B.zuproj");
    mFolder.Write("Reels/Old/C.zuproj");
    ASSERT_TRUE(WaitFor([&] { return mView->mChanges >= changes + 2; }));
    Settle();
    EXPECT_EQ(mDisk.Count(Operation::Status) + mDisk.Count(Operation::ListFolder), 0) << "nobody sees it";
    Open("Reels");
    WaitForRows({"Reels", "Reels/B.zuproj", "Reels/Old", "Reels/Old/A.zuproj", "Reels/Old/C.zuproj"});
}

TEST_F(DirectoryViewTest, KeepsRowsWhenAListingFailsSaysWhyThereAreNoneAndTriesAgain) {
    mFolder.Write("Reels/A.zuproj");
    const ExpectLogged log("(faulty)");
    mDisk.Deny(mFolder.Path(), EACCES);
    ShowRoot();
    const std::string name = mFolder.Path().substr(mFolder.Path().rfind('/') + 1);
    EXPECT_EQ(host::UI_MultiColumnTree::TreeImpl::Of(*mView->GetTree()).mEmptyText.toStdString(),
              "The folder “" + name + "” cannot be read: Permission denied");
    mDisk.Allow(mFolder.Path());
    ShowRoot();
    EXPECT_EQ(ShownRows(), Names{"Reels"});
    const int failed = log.Count();
    mDisk.Deny(mFolder.Path("Reels"), EIO);
    mView->GetTree()->OpenRow(Row("Reels").get());
    EXPECT_TRUE(mView->IsContentAwaited(Row("Reels")));
    Settle();
    EXPECT_FALSE(mView->IsContentAwaited(Row("Reels")));
    EXPECT_TRUE(mView->mLast.mIsLast);
    EXPECT_EQ(mView->mLast.mSystemError, EIO);
    EXPECT_EQ(ShownRows(), Names{"Reels"});
    mDisk.Allow(mFolder.Path("Reels"));
    Close("Reels");
    Open("Reels");
    EXPECT_EQ(ShownRows(), (Names{"Reels", "Reels/A.zuproj"}));
    mDisk.Deny(mFolder.Path("Reels"), EIO);
    mView->RefreshDirectoryContent(Row("Reels"));
    Settle();
    EXPECT_EQ(ShownRows(), (Names{"Reels", "Reels/A.zuproj"}));
    EXPECT_EQ(log.Count(), failed + 2);
    mView->GetTree()->SetRowHeight(69.6f);
    QTreeView& tree = *desk::GetTreeWidget(*mView->GetTree());
    EXPECT_EQ(mView->GetExactOpenedHeight(), float(tree.header()->height() + 2 * 70)) << "in whole pixels";
}

TEST_F(DirectoryViewTest, OpensFoldersOneAfterAnotherAsTheyCome) {
    mFolder.Write("A/B/C/D.zuproj");
    mView->RequestDirectoryContent(mView->mRoot, {}, {});
    Names reached;
    const auto expand = [&](const std::string& path) {
        return mView->ExpandContainerList(
            mView->GetContainerListForPath(Path(path)), [this, &reached](const RowRef& row) {
                reached.insert(row ? host::UTF16to8(mView->GetRowPath(row.get())) : "none");
            });
    };
    EXPECT_FALSE(expand(""));
    EXPECT_FALSE(expand("../elsewhere"));
    EXPECT_TRUE(expand("A/B/C")) << "the root is to come";
    EXPECT_TRUE(expand("A/X/C"));
    Settle();
    EXPECT_EQ(reached, (Names{mFolder.Path("A/B/C"), "none"}));
    EXPECT_EQ(ShownRows(), (Names{"A", "A/B", "A/B/C"})) << "the last one is not opened";
    EXPECT_FALSE(expand("A/X/C")) << "that is known";
    // The user closes a folder, or all is called off, before the next one has come.
    mFolder.Write("E/F/G/H.zuproj");
    ASSERT_TRUE(WaitFor([this] { return Row("E") != nullptr; }));
    reached.clear();
    mView->ReadAhead({Path("E/F/G"), Path("nowhere/G"), mFolder.PathUTF16()});
    EXPECT_TRUE(expand("E/F/G"));
    mView->GetTree()->CloseRow(Row("E").get());
    Settle();
    EXPECT_EQ(reached, Names{"none"});
    EXPECT_TRUE(mStore->IsListed(Path("E/F/G"))) << "read ahead";
    mView->ReadAhead({});
    EXPECT_FALSE(mStore->IsListed(Path("E/F/G")));
    reached.clear();
    EXPECT_TRUE(expand("E/F/G"));
    mView->CancelExpansions();
    Settle();
    EXPECT_EQ(reached, Names{});
}

TEST_F(DirectoryViewTest, ShowsOnlyTheNewRootAndMayDieAtAnyTime) {
    mFolder.Write("North/A.zuproj");
    mFolder.Write("South/Reels/B.zuproj");
    mView->mRoot = Path("North");
    ShowRoot();
    mView->RequestDirectoryContent(mView->mRoot, {}, {});
    mView->mRoot = Path("South");
    ShowRoot();
    EXPECT_EQ(ShownRows(), Names{"South/Reels"});
    EXPECT_FALSE(mStore->IsListed(Path("North")));
    mView->RemoveAllRows();
    ShowRoot();
    EXPECT_EQ(ShownRows(), Names{"South/Reels"}) << "what was removed is delivered whole again";

    const host::RefPtr<host::MediaBrowserMultiColumnTree> tree = mView->GetTree();
    tree->OpenRow(Row("South/Reels").get());
    DropView();
    mMain.Advance(std::chrono::seconds(1));
    mFolder.Write("South/C.zuproj");
    mMain.Advance(std::chrono::seconds(1));
    EXPECT_FALSE(mStore->IsListed(Path("South")));
    // The tree may live on, without asking the view.
    for (const RowRef& row : tree->GetTopLevelRows()) tree->CloseRow(row.get());
    MakeView();
    mManager.reset();
    mView->mRoot = Path("South");
    ShowRoot();
    EXPECT_EQ(ShownRows(), (Names{"South/C.zuproj", "South/Reels"}));
}

}  // namespace
