#pragma once

#include <QAbstractItemModelTester>
#include <QtWidgets>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsModule.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "desk/core/names/QtStrings.h"
#include "desk/files/live/ChangeSource.h"
#include "desk/files/live/FolderStore.h"
#include "desk/framework/PanelRegistry.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/production/Production.h"
#include "desk/toolkit/TreeAccess.h"
#include "host/files/PathUtils.h"
#include "host/framework/Identifiers.h"
#include "host/project/ProjectLockFile.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"
#include "tests/support/TestPanelFrame.h"
#include "tests/support/TestProject.h"

namespace HandlerSharedProjects {

/// Rows as they show, two blanks a level.
using Rows = std::vector<std::string>;

/// Counts what a tree's model tells its view.
struct ModelSignals {
    explicit ModelSignals(const QTreeView& view) {
        const QAbstractItemModel* model = view.model();
        QObject::connect(model, &QAbstractItemModel::rowsInserted, &mContext,
                         [this](const QModelIndex&, int first, int last) { mInserted += last - first + 1; });
        QObject::connect(model, &QAbstractItemModel::rowsRemoved, &mContext,
                         [this](const QModelIndex&, int first, int last) { mRemoved += last - first + 1; });
        QObject::connect(model, &QAbstractItemModel::modelReset, &mContext, [this] { ++mResets; });
    }
    QObject mContext;
    int mInserted = 0, mRemoved = 0, mResets = 0;
};

/// The real panel on a production in a temporary folder. Names are paths in the production ("Reels/Reel 1"),
/// projects without their extension.
class PanelFixture : public HostFixture {
protected:
    PanelFixture() {
        // A process loads the library once.
        static const std::unique_ptr<Module> sModule(CreateModule(u"SharedProjects.so"));
        mStore = desk::CreateFolderStore(desk::SweepInBackground);
        desk::GetServices().mFolderStore = mStore.get();
        mFolder.MakeFolder(kProduction);
    }

    ~PanelFixture() override {
        ClosePanel();
        mLocks.clear();
        while (!desk::OpenProjectList::Instance().Get().empty())
            desk::OpenProjectList::Instance().Remove(desk::OpenProjectList::Instance().Get().back());
        desk::Production::Instance().Close();
        mMain.Advance(std::chrono::seconds(1));
        desk::GetServices().mFolderStore = mStoreBefore;
        mStore.reset();
    }

    // What stands on the disk.

    std::string OnDisk(const std::string& name) const { return mProduction + '/' + name; }
    void MakeFolder(const std::string& name) { mFolder.MakeFolder(OnDisk(name)); }
    void MakeProject(const std::string& name, const std::string& bytes = "project") {
        mFolder.Write(OnDisk(name) + ".zuproj", bytes);
    }
    /// "Reels/Reel 1" is a project, "Reels/" a folder.
    struct Item {
        Item(const char* name, std::string bytes = "project") : mName(name), mBytes(std::move(bytes)) {}
        std::string mName, mBytes;
    };
    void Make(std::initializer_list<Item> items) {
        for (const Item& item : items)
            item.mName.back() == '/' ? MakeFolder(item.mName) : MakeProject(item.mName, item.mBytes);
    }
    void RemoveProject(const std::string& name) { mFolder.Remove(OnDisk(name) + ".zuproj"); }
    void OtherUserLocks(const std::string& name, const UTF16String& user = u"edit-bay-2") {
        WriteLock(name, WriteLockRecord(MakeForeignRecord(mDesktop, user, u"machine-of-" + user)));
    }
    void WeLock(const std::string& name) {
        mLocks.push_back(
            CreateProjectLockFile(PathOf(name + ".zuproj"), mDesktop.mUserName, mDesktop.mMachineName));
        ASSERT_TRUE(mLocks.back());
    }
    void WriteLock(const std::string& name, const std::string& bytes) {
        // As a whole, as lock files come to be.
        mFolder.Write("taking a lock", bytes);
        mFolder.Rename("taking a lock", LockPath(name));
    }
    void Unlock(const std::string& name) { mFolder.Remove(LockPath(name)); }

    // What the user and the program do.

    void OpenProduction(const std::string& production = kProduction) {
        mProduction = production;
        mFolder.MakeFolder(production);
        desk::Production::Instance().Open(mFolder.PathUTF16(production));
        if (!mTabView) OpenPanel();
        Settle();
    }
    void OpenProductionWith(std::initializer_list<Item> items) {
        Make(items);
        OpenProduction();
    }
    void CloseProduction() {
        desk::Production::Instance().Close();
        Settle();
    }
    void OpenPanel() {
        mHandler = desk::PanelRegistry::Instance().FindOrCreateHandler(kZuProductionFolderHandlerID);
        ASSERT_TRUE(mHandler);
        mTabView = dynamic_cast<SharedProjectsTabView*>(mHandler->CreateTabViewSelf(&mFrame));
        ASSERT_TRUE(mTabView && mTabView->AreTreeViewsCreated());
        for (QTreeView* tree : mFrame.Window().findChildren<QTreeView*>())
            new QAbstractItemModelTester(tree->model(), QAbstractItemModelTester::FailureReportingMode::Warning,
                                         tree);
        Settle();
    }
    void ClosePanel() {
        if (!mTabView) return;
        mTabView = nullptr;
        mHandler = nullptr;
        desk::PanelRegistry::Instance().DestroyHandler(kZuProductionFolderHandlerID);
        mMain.RunUntilIdle();
    }
    desk::OpenProjectRef OpenProject(const std::string& name, bool isReadOnly = false,
                                     bool isOutOfDate = false) {
        RefPtr<TestProject> project = new TestProject(PathOf(name + ".zuproj"));
        project->mIsReadOnly = isReadOnly;
        project->mIsOutOfDate = isOutOfDate;
        desk::OpenProjectList::Instance().Add(project);
        Settle();
        return project;
    }
    void OpenFolder(const std::string& name) {
        Tree()->OpenRow(RowOf(name).get());
        Settle();
    }
    void Select(const std::vector<std::string>& names) {
        RowVec rows;
        for (const std::string& name : names) rows.push_back(RowOf(name));
        Tree()->SelectRows(rows);
        Settle();
    }
    void TypeSearch(const QString& text) {
        SearchField()->setText(text);
        Settle();
    }
    bool Send(int commandID) {
        const bool isHandled = mTabView->ObeyCommand(Command(commandID));
        Settle();
        return isHandled;
    }

    /// Lets everything happen that can happen without new events from outside.
    void Settle() {
        mMain.RunUntilIdle();
        mMain.Advance(std::chrono::milliseconds(100));
        CheckConsistent();
    }
    /// Waits until the change that another process has made shows; false when it does not.
    bool Shows(const std::function<bool()>& isDone) {
        for (int round = 0; round < 400; ++round) {
            if (mMain.RunUntil(isDone, std::chrono::milliseconds(10))) {
                CheckConsistent();
                return true;
            }
            mMain.Advance(std::chrono::milliseconds(50));
        }
        return false;
    }
    bool Shows(const Rows& rows) {
        if (Shows([&] { return ShownRows() == rows; })) return true;
        EXPECT_EQ(ShownRows(), rows);
        return false;
    }

    bool ShowsHits(const Rows& rows) {
        if (Shows([&] { return ShownHits() == rows; })) return true;
        EXPECT_EQ(ShownHits(), rows);
        return false;
    }

    // What shows.

    SharedProjectsDirectoryView& DirectoryView() { return *mTabView->GetTreeView().GetDirectoryView(); }
    SharedProjectsSearchResultsView& SearchView() { return *mTabView->GetTreeView().GetSearchResultsView(); }
    MediaBrowserMultiColumnTree* Tree() { return DirectoryView().GetTree(); }
    QTreeView& TreeWidget() { return *desk::GetTreeWidget(*Tree()); }
    QTreeView& SearchTreeWidget() { return *desk::GetTreeWidget(*SearchView().GetTree()); }
    std::string Title() { return UTF16to8(mFrame.GetTitle()); }
    QLineEdit* SearchField() { return mFrame.Window().findChild<QLineEdit*>(QStringLiteral("search")); }

    UTF16String PathOf(const std::string& name) { return mFolder.PathUTF16(OnDisk(name)); }
    RowRef FindRow(const std::string& name) {
        RowRef row = DirectoryView().GetRowFromPath(PathOf(name + ".zuproj"));
        return row ? row : DirectoryView().GetRowFromPath(PathOf(name));
    }
    RowRef RowOf(const std::string& name) {
        RowRef row = FindRow(name);
        EXPECT_TRUE(row) << "no row for " << name;
        return row;
    }
    Rows ShownRows() {
        return IndentedNames(*Tree(), [this](const RowRef& row) {
            const UTF16String path = DirectoryView().GetRowPath(row.get());
            return DirectoryView().IsFileRow(row) ? path : PathUtils::AddTrailingSlash(path);
        });
    }
    Rows ShownHits() {
        return IndentedNames(*SearchView().GetTree(),
                             [this](const RowRef& row) { return SearchView().GetRowPath(row); });
    }
    /// What a cell of the directory view says to assistive technology.
    std::string Says(const std::string& name, ColumnID column = Columns::kNameColumnID) {
        const std::vector<ColumnID> appended = {Columns::kNameColumnID, Columns::kLockedColumnID,
                                                Columns::kModifiedDateColumnID, Columns::kCreationDateColumnID,
                                                Columns::kSizeColumnID};
        const auto modelColumn = std::ranges::find(appended, column) - appended.begin();
        return TextOf(TreeWidget(), RowOf(name), static_cast<int>(modelColumn));
    }
    /// What the name cell of a hit says.
    std::string HitSays(const std::string& name) {
        return TextOf(SearchTreeWidget(), SearchView().GetRowFromPath(PathOf(name)), 0);
    }
    const UI_StaticText& SelectionCountText() {
        for (const RefPtr<UI_Node>& child : mTabView->GetToolkitContainer()->GetChildren())
            if (const auto* text = dynamic_cast<const UI_StaticText*>(child.get())) return *text;
        throw std::logic_error("the panel has no selection count");
    }
    std::string SelectionCount() { return UTF16to8(SelectionCountText().GetValue()); }
    std::vector<std::string> SelectedNames() {
        std::vector<std::string> names;
        for (const UTF16String& path : mTabView->GetSelectedPaths())
            names.push_back(UTF16to8(Columns::GetPathDisplayName(path)));
        return names;
    }

    /// What must hold after every step.
    void CheckConsistent() {
        if (!mTabView || !mTabView->AreTreeViewsCreated()) return;
        CheckTree(*Tree(), TreeWidget(), DirectoryView().GetAllRows(),
                  [this](const RowRef& row) { return DirectoryView().GetRowPath(row.get()); });
        for (const RowRef& row : DirectoryView().GetAllRows())
            EXPECT_EQ(DirectoryView().GetRowFromPath(DirectoryView().GetRowPath(row.get())), row);
        CheckTree(*SearchView().GetTree(), SearchTreeWidget(), SearchView().GetTree()->GetOpenedRows(),
                  [this](const RowRef& row) { return SearchView().GetRowPath(row); });
    }

    static constexpr char kProduction[] = "North Shore";

    desk::FolderStore* mStoreBefore = desk::GetServices().mFolderStore;
    std::unique_ptr<desk::FolderStore> mStore;
    TestPanelFrame mFrame{QSize(929, 740)};
    Handler* mHandler = nullptr;
    SharedProjectsTabView* mTabView = nullptr;
    std::string mProduction = kProduction;
    /// Those of this process.
    std::vector<ProjectLockFileRef> mLocks;

private:
    static std::string TextOf(const QTreeView& widget, const RowRef& row, int column) {
        for (QModelIndex i = widget.model()->index(0, 0); i.isValid(); i = widget.indexBelow(i))
            if (i.internalPointer() == row.get())
                return i.siblingAtColumn(column).data(Qt::AccessibleTextRole).toString().toStdString();
        return "(not shown)";
    }
    std::string LockPath(const std::string& name) const {
        const std::filesystem::path project = OnDisk(name);
        return project.parent_path() / ('.' + project.filename().string() + ".zuproj.lock");
    }
    template <class GetPath>
    static Rows IndentedNames(const UI_MultiColumnTree& tree, GetPath getPath) {
        Rows names;
        for (const RowRef& row : tree.GetOpenedRows()) {
            std::string indentation;
            for (RowRef parent = row->GetParentRow(); parent; parent = parent->GetParentRow())
                indentation += "  ";
            names.push_back(indentation + UTF16to8(Columns::GetPathDisplayName(getPath(row))));
        }
        return names;
    }
    template <class GetPath>
    static void CheckTree(const UI_MultiColumnTree& tree, QTreeView& widget, const RowVec& rows,
                          GetPath getPath) {
        std::set<UTF16String> paths;
        for (const RowRef& row : rows) {
            const UTF16String path = PathUtils::ToNormalizedPath(getPath(row));
            EXPECT_FALSE(path.empty());
            EXPECT_TRUE(paths.insert(path).second) << "two rows for " << UTF16to8(path);
        }
        for (const RowRef& row : tree.GetSelectedRows())
            EXPECT_NE(std::ranges::find(rows, row), rows.end()) << "a selected row is gone";
        std::size_t shown = 0;
        if (!widget.isVisible()) return;
        for (QModelIndex i = widget.model()->index(0, 0); i.isValid(); i = widget.indexBelow(i)) ++shown;
        EXPECT_EQ(shown, tree.CountOpenedRows());
    }
};

}  // namespace HandlerSharedProjects
