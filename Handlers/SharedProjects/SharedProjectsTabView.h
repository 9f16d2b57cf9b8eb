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

    /// The paths of the selected rows of the tree that is shown, in the order in which they were selected.
    UTF16StringVec GetSelectedPaths() const;
    /// The same without those inside another selected row's folder.
    UTF16StringVec GetSelectedNonRedundantPaths() const;
    /// Those of them that may be moved to the trash. May wait for the volume. Throws `FileException` when the
    /// user cancelled looking into a folder.
    UTF16StringVec GetDeleteableSelectedPaths() const;
    /// Moves the items to the production's trash unless one of them may not go there. May wait for the volume
    /// and for the user.
    void TryToMoveToSharedProjectsTrash(const UTF16StringVec& paths);

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
    Utils::ViewPropertyLoggingData GetViewPropertyLoggingData() const;

protected:
    void FinishCreateSelf(const Rect& bounds) override;
    void SetBoundsSelf(const Rect& bounds) override;
    void PaintSelf(DC& dc) override;
    void NowOnDuty() override;
    void DestroySelf() override;

private:
    struct CommandPair;
    static const CommandPair* FindCommandPair(int id);

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

    /// Runs `action` on the tree that is shown, if there is one.
    template <class Action>
    void OnShownView(Action action) const;
    /// The paths of the selection, for status functions: kept until the selection or a row changes.
    const UTF16StringVec& GetKnownSelection() const;
    void ForgetKnownSelection();
    void UpdateControlEnabledStatesLater();
    void FollowTreeChange();

    bool CanCreateItems() const;
    UTF16String GetTargetFolder() const;
    void ShowCreatedItems(const UTF16StringVec& paths);

    void OnEditTextValueChanged();
    void OnDebugDatabaseChanged();
    void OnProductionOpened();
    void OnProductionClosed();

    // The commands, in pairs. They may wait for the volume and for the user; the statuses wait for nothing.
    bool OnNewFolderCommandStatus(bool& enabled) const;
    bool OnNewProjectCommandStatus(bool& enabled) const;
    bool OnAddProjectCommandStatus(bool& enabled) const;
    bool OnOpenProjectCommandStatus(bool& enabled) const;
    bool OnCloseProjectCommandStatus(bool& enabled) const;
    bool OnCloseAllOtherProjectsCommandStatus(bool& enabled) const;
    bool OnCloseAllProjectsCommandStatus(bool& enabled) const;
    bool OnRefreshProjectCommandStatus(bool& enabled) const;
    bool OnRefreshAllProjectsCommandStatus(bool& enabled) const;
    bool OnSaveAllProjectsCommandStatus(bool& enabled) const;
    bool OnDeleteItemCommandStatus(bool& enabled) const;
    bool OnToggleLockCommandStatus(bool& enabled) const;
    bool OnRevealRootInSystemCommandStatus(bool& enabled) const;
    bool OnRevealItemInSystemCommandStatus(bool& enabled) const;
    bool OnMakeACopyCommandStatus(bool& enabled) const;
    bool OnNewFolderCommand(const Command& command);
    bool OnNewProjectCommand(const Command& command);
    bool OnAddProjectCommand(const Command& command);
    bool OnOpenProjectCommand(const Command& command);
    bool OnCloseProjectCommand(const Command& command);
    bool OnCloseAllOtherProjectsCommand(const Command& command);
    bool OnCloseAllProjectsCommand(const Command& command);
    bool OnRefreshProjectCommand(const Command& command);
    bool OnRefreshAllProjectsCommand(const Command& command);
    bool OnSaveAllProjectsCommand(const Command& command);
    bool OnDeleteItemCommand(const Command& command);
    bool OnToggleLockCommand(const Command& command);
    bool OnRevealRootInSystemCommand(const Command& command);
    bool OnRevealItemInSystemCommand(const Command& command);
    bool OnMakeACopyCommand(const Command& command);
    /// What Toggle Lock would do, as the menu says it; empty when it could do nothing, whoever has locks.
    UTF16String GetToggleLockCommandText() const;

    bool OnMovementCommandStatus(bool& enabled) const;
    bool OnZoomCommandStatus(bool& enabled) const;
    bool OnSelectAllCommandStatus(bool& enabled) const;
    bool OnDeselectAllCommandStatus(bool& enabled) const;
    bool OnMoveHomeCommand(const Command& command);
    bool OnMoveEndCommand(const Command& command);
    bool OnMovePageUpCommand(const Command& command);
    bool OnMovePageDownCommand(const Command& command);
    bool OnSelectAllCommand(const Command& command);
    bool OnDeselectAllCommand(const Command& command);
    bool OnZoomInCommand(const Command& command);
    bool OnZoomOutCommand(const Command& command);

    void SetZoomFromCommand(double zoom);
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
    mutable std::optional<UTF16StringVec> mKnownSelection;
    mutable std::optional<bool> mCanSelectionGoToTrash;
    RefPtr<QueueOnlyOnce> mQueuedControlUpdate;
    bool mIsTreeChangeQueued = false;
    UTF16String mPreviousSearchText;
    /// The production whose rows and layout show; empty for none.
    UTF16String mShownProduction;
    UTF16String mDeferredRenameRowPath;
};

template <class Action>
void SharedProjectsTabView::OnShownView(Action action) const {
    if (!AreTreeViewsCreated()) return;
    if (mTreeView->GetViewType() == TreeViewType::SearchResultsView)
        action(*mTreeView->GetSearchResultsView());
    else
        action(*mTreeView->GetDirectoryView());
}

}  // namespace HandlerSharedProjects
