#pragma once

#include <memory>
#include <optional>
#include <set>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsSearchResultsView.h"
#include "host/core/MainThread.h"
#include "host/framework/ControlView.h"
#include "host/framework/TabView.h"
#include "host/toolkit/UI_Slider.h"
#include "host/toolkit/UI_StaticText.h"

namespace HandlerSharedProjects {

/// The menu that the panel's tab offers.
inline constexpr char kFlyoutMenuID[] = "HandlerSharedProjects_Wing_Menu";

enum class TreeViewType { DirectoryView = 0, SearchResultsView = 1 };

/// Fills the panel's tree area: owns both trees and shows one of them. UI thread.
class SharedProjectsTreeView final : public SubView {
public:
    explicit SharedProjectsTreeView(Commander* parent);
    ~SharedProjectsTreeView() override;

    /// Makes both trees; called once, before `Create`.
    void Init(const std::shared_ptr<SharedProjectsTabView>& tabView,
              const std::shared_ptr<MediaBrowserContentManager>& contentManager);

    /// Shows one of the trees, in the columns of the other.
    void SetView(TreeViewType type);
    TreeViewType GetViewType() const { return mViewType; }

    /// Gives the other tree the columns of `source`, which is one of the two.
    void SyncTreeColumnProperties(const UI_SubView& source);

    /// The rows of the tree that is shown. Not before `Init`, nor after the view was destroyed.
    SharedProjectsItemTree& GetShownItems() const;
    /// Holds back what would change the rows of either tree, until the next call with false.
    void SetPauseUpdates(bool pause);
    /// The number of opened rows of the tree that is shown.
    std::uint32_t GetOpenedRowsCount() const;

    /// Null before `Init` and after the view was destroyed.
    SharedProjectsDirectoryView* GetDirectoryView() const { return mDirectoryView.get(); }
    SharedProjectsSearchResultsView* GetSearchResultsView() const { return mSearchResultsView.get(); }

protected:
    void FinishCreateSelf(const Rect& bounds) override;
    void SetBoundsSelf(const Rect& bounds) override;
    void DestroySelf() override;

private:
    void LayOutViews(const Rect& bounds);
    template <class TreeView>
    void ReleaseView(RefPtr<TreeView>& field);

    RefPtr<SharedProjectsDirectoryView> mDirectoryView;
    RefPtr<SharedProjectsSearchResultsView> mSearchResultsView;
    TreeViewType mViewType = TreeViewType::DirectoryView;
};

/// The panel's main view: search field and buttons above, the tree area, selection count and zoom below. It
/// answers the panel's commands. Owned by a shared pointer. UI thread.
class SharedProjectsTabView final : public TabView,
                                    public Listener,
                                    public std::enable_shared_from_this<SharedProjectsTabView> {
public:
    /// How the panel was left: what is remembered of it for each production.
    struct StateData {
        SharedProjectsDirectoryView::StateData mDirectoryViewData;
        /// From 0 to 1.
        float mZoom = 0;
        bool mDockedInMainWindow = false;
        /// In global screen units, all zero for a panel that is docked.
        Rect mFloatingWindowGlobalRect;
        UTF16String mSearchText;
        friend bool operator==(const StateData&, const StateData&) = default;
    };

    explicit SharedProjectsTabView(Commander* parent);
    ~SharedProjectsTabView() override;

    bool FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark, UTF16String& text) override;
    UTF16String DescribeWhyDisabled(int id) override;
    bool ObeyCommand(const Command& command) override;
    void ListenToMessage(const Message& message) override;

    bool GetSnapSizesSelf(std::vector<Point>& sizes) const override;
    float GetStackedDimensionHeight() const override;
    int GetStackedDimensionHeightMin() const override;
    int GetStackedDimensionHeightMax() const override;
    bool AllowTablessSelf() const override;
    const char* GetFlyoutMenuID() const override;

    /// True while the trees can be worked with.
    bool AreTreeViewsCreated() const;
    SharedProjectsTreeView& GetTreeView() const { return *mTreeView; }
    SearchBoxControl& GetSearchBox() { return mSearchBox; }
    /// The rows of the tree that is shown; null while `AreTreeViewsCreated` is false.
    SharedProjectsItemTree* GetShownItems() const;

    /// The paths of the selected rows of the tree that is shown, in the order in which they were selected.
    UTF16StringVec GetSelectedPaths() const;
    /// The same without those inside another selected row's folder.
    UTF16StringVec GetSelectedNonRedundantPaths() const;
    /// How many rows of the tree that is shown are selected; 0 while there is none.
    std::size_t CountSelectedRows() const;
    /// Why not all of the selection may go to the trash, as far as is known: a sentence for the user; empty
    /// when it may. Kept until the selection or a row changes.
    const UTF16String& DescribeWhySelectionStays() const;
    /// Those of them that may be moved to the trash; `reasons` becomes a sentence for each of the others that
    /// says why not. May wait for the volume. Throws `FileException` when the user cancelled looking into a
    /// folder.
    UTF16StringVec GetDeleteableSelectedPaths(UTF16StringVec& reasons) const;
    /// Moves what of the selection may go to the trash there, and tells the user of the rest. `usageAction` is
    /// what is recorded. May wait as below.
    void MoveSelectionToTrash(const char* usageAction);
    /// Moves the items to the production's trash unless one of them may not go there. May wait for the volume
    /// and for the user.
    void TryToMoveToSharedProjectsTrash(const UTF16StringVec& paths);

    /// Shows items that are being made, selected, as soon as they are there; a search ends.
    void ShowCreatedItems(const UTF16StringVec& paths);
    /// Shows a folder in the tree of all folders, open and selected; a search ends.
    void ShowFolder(const UTF16String& path);
    /// The item whose row is selected, to be renamed, as soon as it is there; empty for none.
    void SetDeferredRenameRowPath(const UTF16String& path) { mDeferredRenameRowPath = path; }
    const UTF16String& GetDeferredRenameRowPath() const { return mDeferredRenameRowPath; }

    /// How the panel stands now; the default while there are no trees.
    StateData GetCurrentStateData() const;
    /// Brings the panel to a state: folders open, and a search runs, as their content arrives.
    void UpdateFromStateData(const StateData& state);
    /// Has the handler remember the state for the production that the panel shows.
    void SaveGlobalStateData();
    /// Shows the open production as it was left.
    void LoadGlobalStateData();
    /// The production that the panel shows may have been closed, or another one opened: then its state is
    /// saved, while its rows are still there.
    void LeaveClosedProduction();

    /// Rows have come, gone, been opened or closed: what the panel shows of it follows once a frame at most.
    void OnTreeChanged();
    /// The selection of the tree that is shown has changed.
    void OnSelectionChanged();

    void UpdateTabName();
    /// The buttons follow the status of their commands; nothing is enabled while no production is open.
    void UpdateControlEnabledStates();
    void UpdateSelectionCount();

    /// The factor from base column widths (those at zoom 0) to shown ones.
    float GetColumnWidthScale() const;
    /// Records the base width of the column at a display position.
    void UpdateBaseColumnWidthMap(const Columns::HeaderRowRef& headerRow, unsigned columnIndex);
    void UpdateBaseColumnWidthMapForAllColumns(const Columns::HeaderRowRef& headerRow);
    const Columns::ColumnWidths& GetColumnIDToBaseWidthMap() const { return mColumnIDToBaseWidth; }
    /// Gives both trees the row height and column widths of the zoom.
    void UpdateViewsFromZoomAmount();
    /// Goes to the next step of the zoom: 1 larger, -1 smaller.
    void StepZoom(int direction);
    Utils::ViewPropertyLoggingData GetViewPropertyLoggingData() const;

protected:
    void FinishCreateSelf(const Rect& bounds) override;
    void SetBoundsSelf(const Rect& bounds) override;
    void PaintSelf(DC& dc) override;
    void NowOnDuty() override;
    void DestroySelf() override;

private:
    void CreateTreeView(const Rect& bounds);
    void CreateSearchBox(const Rect& bounds);
    void CreateSelectionCount(const Rect& bounds);
    void CreateZoomSlider(const Rect& bounds);
    void CreateButtons(const Rect& bounds);
    void InstallHostFunctions();
    static void RemoveHostFunctions();
    void ApplySliderTunables();
    void ApplyButtonTunables();

    static Rect GetDirectoryViewBounds(const Rect& bounds);
    static Rect GetSearchBoxBounds(const Rect& bounds);
    static Rect GetSelectionCountBounds(const Rect& bounds);
    static Rect GetZoomSliderBounds(const Rect& bounds);
    static Rect GetNewProjectButtonBounds(const Rect& bounds);
    static Rect GetNewFolderButtonBounds(const Rect& bounds);
    static Rect GetTrashButtonBounds(const Rect& bounds);

    void ForgetWhySelectionStays() { mWhySelectionStays.reset(); }
    void UpdateControlEnabledStatesLater();
    void FollowTreeChange();

    bool DropToDeleteButtonSupport(int action, UI_DropData* data);
    static bool IsDropToDeleteButtonValid(const UI_DropData& data);
    void OnDropToDeleteButton(const UI_DropData& data);

    /// See `SharedProjectsDirectoryView::EndEdit`.
    std::function<void()> EndEdit() const;
    void OnEditTextValueChanged();
    void OnSearchBoxLeft();
    void LeaveSearch();
    void OnDebugDatabaseChanged();
    void OnProductionOpened();
    void OnProductionClosed();

    void OnZoomSliderChanging(const UI_ChangeMessage& message);
    void OnZoomSliderChanged(const UI_ChangeMessage& message);

    std::shared_ptr<SharedProjectsTreeView> mTreeView;
    SearchBoxControl mSearchBox;
    RefPtr<UI_StaticText> mSelectionCount;
    RefPtr<UI_Slider> mZoomSlider;
    PictureButton mNewFolderButton;
    PictureButton mNewProjectButton;
    PictureButton mTrashButton;
    Columns::ColumnWidths mColumnIDToBaseWidth;
    /// From 0 to 1.
    double mZoomAmount = 0;
    mutable std::optional<UTF16String> mWhySelectionStays;
    RefPtr<QueueOnlyOnce> mQueuedControlUpdate;
    bool mIsTreeChangeQueued = false;
    UTF16String mPreviousSearchText;
    /// The production whose rows and layout show; empty for none.
    UTF16String mShownProduction;
    UTF16String mDeferredRenameRowPath;
};

}  // namespace HandlerSharedProjects
