#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsFolderOpener.h"
#include "Handlers/SharedProjects/SharedProjectsItemTree.h"
#include "host/mediabrowser/MediaBrowserDirectoryView.h"

namespace HandlerSharedProjects {

class SharedProjectsTabView;
class StateRestorer;

/// The selection of the directory view has changed. Announced on the view's station.
class DirectoryViewSelectionChangedMessage : public MessageTemplate<DirectoryViewSelectionChangedMessage> {};

/// The tree of the production's folders and projects. The production's folder itself is no row: its items are
/// the top-level rows. UI thread.
class SharedProjectsDirectoryView final : public MediaBrowserDirectoryView,
                                          private SharedProjectsItemTree::Owner {
public:
    /// How the tree was left: what is remembered of it for each production. Paths are normalised and lie in the
    /// production.
    struct StateData {
        /// The deepest open folders, in the order of their rows: to open them is to open those above them.
        UTF16StringVec mOpenFolderPaths;
        /// The selected rows, in the order in which they were selected.
        UTF16StringVec mSelectedRowPaths;
        Columns::HeaderRowData mHeaderRowData;
        /// The first visible row; empty when there is none.
        UTF16String mTopVisibleRowPath;
        friend bool operator==(const StateData&, const StateData&) = default;
    };

    /// `rootPath` is the production's folder, empty when none is open. Only a weak reference to `tabView` is
    /// kept.
    SharedProjectsDirectoryView(ProjectRef project, std::shared_ptr<MediaBrowserContentManager> contentManager,
                                const UTF16String& rootPath,
                                const std::shared_ptr<SharedProjectsTabView>& tabView);
    ~SharedProjectsDirectoryView() override;

    SharedProjectsItemTree& GetItems() { return mItems; }
    const SharedProjectsItemTree& GetItems() const { return mItems; }

    Columns::HeaderRowRef GetHeaderRow() const { return mItems.GetHeaderRow(); }
    void SetRowHeight(float height) { mItems.SetRowHeight(height); }
    bool IsFileRow(const RowRef& row) const { return mItems.IsFileRow(row); }
    std::size_t GetOpenedRowsCount() const { return mItems.GetOpenedRowsCount(); }
    void UpdateRow(const RowRef& row) { mItems.UpdateRow(row); }
    void UpdateRow(const RowRef& row, bool exposed) { mItems.UpdateRow(row, exposed); }
    void UpdateOpenRows() { mItems.UpdateOpenRows(); }
    RowRef GetRowFromPath(const UTF16String& path) const override;

    /// Asks for the content of the production's folder.
    void RequestRootContent();
    void RefreshDirectoryContent(const RowRef& row) override;
    /// While paused, nothing that comes from the volume or from open projects reaches the rows; it comes in its
    /// order when the pause ends.
    void SetPauseUpdates(bool pause);
    void OnDirectoryChanged(const UTF16String& path) override;
    void UpdateTreeFromContent(const RowRef& row, const UTF16String& directoryPath,
                               const DirectoryContent& content, const ContentDelivery& delivery) override;
    void ListenToMessage(const Message& message) override;

    UTF16StringVec GetSelectedNonRedundantPaths() const { return mItems.GetSelectedNonRedundantPaths(); }
    void SelectRowsByPaths(const UTF16StringVec& paths) { mItems.SelectRowsByPaths(paths); }
    /// The open folders that hold no open ones, in the order of their rows.
    UTF16StringVec GetDeepestOpenFolderPaths() const;
    /// The view as it is now; while a state is being put back, that state.
    StateData GetCurrentStateData() const;
    /// Puts a state back: the columns at once, then open folders, selection and scroll position as the contents
    /// come, with `waitForRoot` beginning when the production's own has come. What is not there any more is
    /// passed over. While another such job runs, or the production cannot be listed, the state waits. Once the
    /// user has selected something meanwhile, selection and scroll position are left alone.
    void UpdateFromStateData(const StateData& state, bool waitForRoot);

    /// Why the selection cannot be renamed now: a sentence for the user; empty when one row is selected, and
    /// its item may get another name.
    UTF16String DescribeWhySelectionIsNotRenamed() const;
    /// Has the user edit the name of the first selected row in place.
    void RenameSelection();
    /// Ends an edit whose rows are about to go. Returns what gives the item the name that was typed, empty when
    /// there is nothing to do: it works without this view, and may wait for the volume and for the user. Of a
    /// name that cannot be given the status bar says so.
    std::function<void()> EndEdit();

    /// Opens all folders below the row, listed or not yet; with `waitForOwnContent` after the row's own content
    /// has come, if that is to come. Nothing happens while folders are being opened.
    void OpenSubTree(const RowRef& row, bool waitForOwnContent);
    /// Closes the row and all folders below it, the deepest first, and ends the opening of folders.
    void CloseSubTree(const RowRef& row);
    const FolderOpener& GetFolderOpener() const { return mFolderOpener; }

    /// Selects items that are being made, and scrolls to them, as soon as they have rows; a closed folder that
    /// they are in is opened. They become the selection in place of the present one; once the user has selected
    /// something else, those that are still to come are left alone. A newer call drops an older one.
    void SelectWhenShown(const UTF16StringVec& paths);
    /// The same for a folder, which is opened too.
    void OpenWhenShown(const UTF16String& folder);
    /// Selects all opened rows but the trash folder and what is in it.
    void SelectAll();
    void DeselectAll() { mItems.DeselectAll(); }
    void MoveHome() { mItems.MoveHome(); }
    void MoveEnd() { mItems.MoveEnd(); }
    void MovePageUp() { mItems.MovePageUp(); }
    void MovePageDown() { mItems.MovePageDown(); }

protected:
    void AddRowToMaps(const RowRef& row, const DirectoryRowData& data) override;
    void RemoveRowFromMaps(const RowRef& row) override;
    bool CanRowHaveChildren(const RowRef& row) const override;
    bool CanOpenRow(const RowRef& row) const override;
    bool RowIsVolume(const RowRef& row) const override;
    bool RowIsVolumeContainer(const RowRef& row) const override;
    void OnRowDoubleClicked(const RowRef& row, Point point) override;
    void OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column,
                         const RectT<float>& cell) override;
    void OnRowSelectionChanged(const RowVec& rows) override;
    bool OnRowContextMenu(const RowRef& row, Point point) override;
    void OnRowOpenStateChanged(const RowRef& row, bool open) override;
    void ResizeColumns() override;
    bool UI_DoKeyboardEvent(UI_Node* node, const UI_KeyboardEvent& event) override;
    bool UI_DoTimerNotify(UI_TimerID id) override;

private:
    UTF16String GetItemPath(const RowRef& row) const override { return GetRowPath(row.get()); }
    UTF16String GetItemName(const RowRef& row) const override { return GetRowName(row.get()); }
    void SortRows(const std::optional<RowVec>& changed) override;
    void OnRowsSorted() override;
    void OnSortChosen() override;

    /// Removes rows that were made for another kind of item than `content` tells: `x.zuproj` may be a folder.
    void RemoveRowsOfOtherKind(const RowRef& row, const DirectoryContent& content);

    void SetupTree();
    /// Also while its volume does not tell: it is listed when it can be.
    static bool IsRootThere(const UTF16String& rootPath);
    void MonitorRoot(const UTF16String& rootPath);
    void ShowRoot(const UTF16String& rootPath);
    struct EmptyCommand {
        const char* mLabelKey;
        int mCommandID;
    };
    /// What shows while there are no rows but the trash: a text, and buttons for what can be done then.
    void SetEmptyText(std::string_view key, std::initializer_list<EmptyCommand> commands);
    void SetRowsOfEmptyTree();
    void LeaveRoot();
    void CloseSubTreeRecursion(const RowRef& row);
    void GoOnWithWhatWaits();

    void UpdateRowsFromContent(const RowRef& row, const UTF16String& directoryPath,
                               const DirectoryContent& content, const ContentDelivery& delivery);
    void InsertRowsFromContent(const RowRef& row, const DirectoryContent& content,
                               const ContentDelivery& delivery);
    void UpdateFactsOfRows(const RowRef& row, const DirectoryContent& content, const ContentDelivery& delivery);
    void UpdateChildRows(const RowRef& row, const DirectoryContent& content, const ContentDelivery& delivery);
    void OpenFoldersOfAwaitedItems();
    void Await(const UTF16StringVec& paths);
    void SelectAwaitedRows();
    void SelectDeferredRenameRow(const UTF16String& directoryPath, const ContentDelivery& delivery);
    bool IsHoldingBack() const { return mPauseUpdates || mIsNameEdited; }
    /// Holds back, or lets come what has been held back.
    void UpdateHolding();
    void ExecutePendingDirectoryChanges();

    // Renaming in place.
    void OnRowSingleClickDown(const RowRef& row, Point point);
    void OnRowSingleClickUp(const RowRef& row, Point point);
    void CancelSlowSecondClick();
    /// Begins half a second later.
    void RenameLater(const RowRef& row);
    void OfferAgain(const UTF16String& path, const UTF16String& typedName);
    void RenameIfAlone(const RowRef& row);
    unsigned GetNameColumn() const;
    void InstallNameEditText(const RowRef& row);
    void OnEditEnds(UI_TextEdit& edit, int sessionEnd);
    void UpdateTextEditStatus();
    void OnRowRenameComplete(const RowRef& row, int sessionEnd, const UTF16String& typedText);
    /// The name that the row's item is to get; empty when it keeps its own, `invalid` being the one that it
    /// cannot have then.
    UTF16String FindNewName(const RowRef& row, const UTF16String& typedText,
                            std::optional<UTF16String>& invalid) const;
    void RenameProjectAndLockFiles(const UTF16String& oldPath, const UTF16String& newName);
    void RenameFolder(const UTF16String& oldPath, const UTF16String& newName);

    void HandleContextMenuNoSelection(Point point);
    void HandleContextMenuProject(Point point);
    void HandleContextMenuDirectory(Point point);
    void HandleContextMenuMixed(Point point);
    void HandleContextMenuTrash(Point point);
    bool IsOneVisibleRowSelected() const;

    // Dragging; paths are normalised.
    bool OnSelectedRowsDragged(const UI_MouseEvent& event);
    bool DropSupport(int action, UI_DropData* data);
    void OnDragEnter(const OS_ReceiveData& received);
    void OnDragEnterOrMove(const UI_DropData& data);
    void OnDragDrop(const UI_DropData& data);
    void DropRows(const UTF16StringVec& paths, const UTF16String& destination);
    /// False when an item lies in `destination` already, is it, or is above it.
    static bool IsDropValid(const UTF16StringVec& draggedPaths, const UTF16String& destination);
    /// The folder that receives the drop.
    UTF16String GetDropDestinationPathFromDropData(const UI_DropData& data) const;

    void OnRowDisclosureChanged(const RowRef& row, bool opened);
    void OnZuProductionOpened(const UTF16String& path);
    void OnZuProductionClosed(const UTF16String& path);

    std::weak_ptr<SharedProjectsTabView> mTabView;
    /// Lives as long as the view may be called back.
    std::shared_ptr<const void> mLifetime = std::make_shared<char>();
    SharedProjectsItemTree mItems;
    std::set<UTF16String> mFoldersCalledLikeProjects;
    std::set<UTF16String> mPendingDirectoryChanges;
    bool mPauseUpdates = false;
    /// From the beginning of an edit until its end has been dealt with.
    bool mIsNameEdited = false;
    /// Both are set until the end of the edit has been told.
    RowRef mEditedRow;
    RefPtr<UI_TextEdit> mEdit;
    /// A folder that is about to be renamed, and its new name.
    std::optional<std::pair<UTF16String, UTF16String>> mFolderToRename;
    /// The one selected row, when the mouse button went down on it: a slow second click.
    RowRef mRowAwaitingRename;
    /// Of the rows that are being dragged over the tree: none is locked, or the trash.
    bool mMayDraggedRowsMove = false;
    FolderOpener mFolderOpener{*this};
    const std::unique_ptr<StateRestorer> mRestorer;
    /// Stands at the top again when the rows have been sorted.
    RowRef mTopWhileSorting;
    /// Items that are to be selected when their rows come.
    UTF16StringVec mAwaitedPaths;
    /// The folders that hold them, until they have been opened.
    std::set<UTF16String> mFoldersToOpen;
    bool mWereFoldersTried = false;
    /// Those of the items that have come, and the selection as it must be when more come.
    RowVec mArrivedRows;
    RowVec mSelectionBeforeArrival;
    /// The folder that the change monitor watches for this view; empty when none.
    UTF16String mMonitoredRoot;
    /// The text that shows while there are no rows.
    std::string mEmptyTextKey;
};

}  // namespace HandlerSharedProjects
