#pragma once

#include <memory>
#include <set>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsSearchResultsView.h"
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

    /// The item whose row is selected, to be renamed, as soon as it is there; empty for none.
    void SetDeferredRenameRowPath(const UTF16String& path) { mDeferredRenameRowPath = path; }
    const UTF16String& GetDeferredRenameRowPath() const { return mDeferredRenameRowPath; }

    /// Rows have come, gone, been opened or closed.
    void OnTreeChanged();
    /// The selection of the tree that is shown has changed.
    void OnSelectionChanged();
    /// The volume has told of these items, and that those are gone.
    void OnItemsDelivered(const std::set<UTF16String>& paths, const UTF16StringVec& removedPaths);

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
    void InstallPauseFunction();
    void ApplyControlTunables();

    static Rect GetDirectoryViewBounds(const Rect& bounds);
    static Rect GetSearchBoxBounds(const Rect& bounds);
    static Rect GetSelectionCountBounds(const Rect& bounds);
    static Rect GetZoomSliderBounds(const Rect& bounds);
    static Rect GetNewProjectButtonBounds(const Rect& bounds);
    static Rect GetNewFolderButtonBounds(const Rect& bounds);
    static Rect GetTrashButtonBounds(const Rect& bounds);

    void OnEditTextValueChanged();
    void OnDebugDatabaseChanged();
    void OnProductionClosed();

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
    UTF16String mPreviousSearchText;
    UTF16String mDeferredRenameRowPath;
};

}  // namespace HandlerSharedProjects
