#pragma once

#include <functional>
#include <memory>

#include "host/core/Messaging.h"
#include "host/mediabrowser/MediaBrowserContentManager.h"
#include "host/mediabrowser/MediaBrowserMultiColumnTree.h"
#include "host/project/OpenProjects.h"

namespace host {

/// What the directory view keeps of a row: which item it stands for.
struct DirectoryRowData {
    /// The item's name in the folder of the parent row. Not owned: valid during the call.
    std::u16string_view mName;
    /// As the delivery said.
    bool mIsFolder = false;
};

/// Base of views that show folders as a tree. It owns the tree control, asks the content manager for
/// listings, follows `kStation_DirectoryChanges` for the folders it shows, and maps rows to paths.
/// Everything that arrives from the volume passes through `UpdateTreeFromContent`. UI thread; nothing here
/// waits for the volume.
class ZUHOST_API MediaBrowserDirectoryView : public UI_SubView, public Listener {
public:
    /// The host library's half of the view.
    struct DirectoryImpl;

    /// `project`: the project that the view is for; empty for a view of no project's, as a production's is.
    /// Shown is what the folder holds, whichever it is.
    MediaBrowserDirectoryView(ProjectRef project, std::shared_ptr<MediaBrowserContentManager> contentManager);
    ~MediaBrowserDirectoryView() override;

    /// The tree that shows the rows; lives as long as the view, never null.
    MediaBrowserMultiColumnTree* GetTree() const;

    /// The full path of a row's item; empty for a row that is not (or no longer) in the map.
    UTF16String GetRowPath(const UI_MultiColumnTreeRow* row) const;
    /// The name of a row's item in its folder; empty likewise. Cheaper than its path.
    UTF16String GetRowName(const UI_MultiColumnTreeRow* row) const;
    /// All rows of the map: a row before the rows below it.
    RowVec GetAllRows() const;
    /// The paths of the selected rows, in the order in which they were selected.
    UTF16StringVec GetSelectedPaths() const;
    /// Opens a closed row, closes an open one.
    void ToggleRow(const RowRef& row);
    /// Height of the header and all opened rows, in view units.
    float GetExactOpenedHeight() const;
    /// With false neither this view nor its tree acts on keys, as while a name is edited; true by default.
    void EnableKeyboardEvents(bool enable);
    bool AreKeyboardEventsEnabled() const;
    /// The station of this view: `MediaBrowserDirectoryViewRowDisclosureChanged` and what the derived view
    /// announces.
    const StationID& GetStationID() const;

    /// Asks for the content of a folder, whose row is `row` (null for the root). Deliveries arrive later
    /// through `UpdateTreeFromContent`; the spinner shows meanwhile. `context` is kept with the request and
    /// written to the log when it fails. Asking again for a folder that is being listed asks once more after
    /// that. Rows open themselves: opening a row that has no content yet asks for it.
    void RequestDirectoryContent(const UTF16String& path, const RowRef& row, const UTF16String& context);
    /// True while content that was asked for is to come: the last delivery that answers the request has not
    /// arrived. `row` as above. A folder that goes meanwhile is not answered: its row is removed.
    bool IsContentAwaited(const RowRef& row) const;
    /// With true, what comes from the volume waits, and rows stay as they are, until the next call with false:
    /// the deliveries then come from within that call, in their order; those of one folder come together, and
    /// changes that follow each other as one that names each item once. Requests and expansions go on waiting
    /// meanwhile.
    void HoldDeliveries(bool hold);
    /// Removes all rows, and forgets all requests, expansions and what is read ahead.
    void RemoveAllRows();

    /// The folders between the root and the folder at `path`, which is the last of them; empty for the root
    /// itself and for what does not lie below it.
    UTF16StringVec GetContainerListForPath(const UTF16String& path) const;
    using ExpansionCallback = std::function<void(const RowRef& row)>;
    /// Opens the folders of such a list one after another, each when its row has come, all but the last; then
    /// calls `completion` with the row of the last one, once and never from within this call. When it turns out
    /// that a folder is not there, cannot be listed, or has been closed meanwhile, the row is empty. False, and
    /// `completion` is not called, when that is known at once.
    bool ExpandContainerList(const UTF16StringVec& containers, ExpansionCallback completion);
    /// Ends all expansions that are under way: their completions are not called.
    void CancelExpansions();
    /// Has the folders, and those between them and the root, listed in the background, the last ones first, so
    /// that their contents are there when they are opened one after another; until the next call, with no
    /// folders for example.
    void ReadAhead(const UTF16StringVec& folders);

    /// Reads the listing of a folder's row anew.
    virtual void RefreshDirectoryContent(const RowRef& row);
    /// The content of the folder `path` has changed: brings its rows up to date. Cheap for few changes:
    /// only what changed is read.
    virtual void OnDirectoryChanged(const UTF16String& path);
    /// A delivery has arrived for `directoryPath`, whose row is `row` (empty for the root): content, a change,
    /// or that the content could not be had. Called again for items whose facts (dates, size, lock) have come
    /// or changed. The base does nothing.
    virtual void UpdateTreeFromContent(const RowRef& row, const UTF16String& directoryPath,
                                       const DirectoryContent& content, const ContentDelivery& delivery);
    virtual void ListenToMessage(const Message& message) override;

protected:
    /// Brings the rows below `row` in line with a delivery: makes rows for the items that have none (handing
    /// each to `AddRowToMaps`), keeps those that have one, and removes rows (through `RemoveRowFromMaps`) as
    /// the delivery's extent says. `content` is the delivery's, or what is to be shown of it in the same order;
    /// only in a change may an item stand twice, and it counts once. New rows show, sorted, when the delivery
    /// has been dealt with. `root` is the folder whose items are the top-level rows. Costs the items, not the
    /// rows, and no path is composed.
    void InsertDirectoryContent(const RowRef& row, const DirectoryContent& content,
                                const ContentDelivery& delivery, const UTF16String& root);
    /// Brings the row's own cells up to date: draws them anew.
    void UpdateRow(const RowRef& row);
    /// The row of an item below `parent` (null for the root), by its name; empty when there is none.
    RowRef FindChildRow(const UI_MultiColumnTreeRow* parent, std::u16string_view name) const;

    /// Records a row that was made; after it `GetRowPath` answers.
    virtual void AddRowToMaps(const RowRef& row, const DirectoryRowData& data);
    /// Forgets a row. Called for each row that is removed, those below it first.
    virtual void RemoveRowFromMaps(const RowRef& row);

    /// True for a row that shows a triangle: a folder's. The base goes by the rows below it and by
    /// `HasCustomChild`.
    virtual bool CanRowHaveChildren(const RowRef& row) const;
    /// True for a row that may be opened now. The base asks `CanRowHaveChildren`.
    virtual bool CanOpenRow(const RowRef& row) const;
    /// True for the row of a whole volume, and of what holds volumes. The base answers false.
    virtual bool RowIsVolume(const RowRef& row) const;
    virtual bool RowIsVolumeContainer(const RowRef& row) const;

    // What the tree's callbacks tell (`UI_MultiColumnTree`).

    /// The base opens or closes the row.
    virtual void OnRowDoubleClicked(const RowRef& row, Point point);
    /// The base draws nothing.
    virtual void OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column,
                                 const RectT<float>& cell);
    /// The base does nothing.
    virtual void OnRowSelectionChanged(const RowVec& rows);
    /// The base asks for the content of an opened row that has none, and for what changed while it was closed.
    virtual void OnRowOpenStateChanged(const RowRef& row, bool open);
    /// The base has no menu and answers false.
    virtual bool OnRowContextMenu(const RowRef& row, Point point);
    /// Fits the columns to the view's new width. The base gives spare width to the first column.
    virtual void ResizeColumns();

    void UI_SizeChanged(const RectT<float>& localBounds) override;

private:
    friend struct DirectoryImpl;
    std::unique_ptr<DirectoryImpl> mDirectoryImpl;
};

/// A row was opened or closed, by the user or otherwise. Announced on the view's station.
class ZUHOST_API MediaBrowserDirectoryViewRowDisclosureChanged
    : public MessageTemplate<MediaBrowserDirectoryViewRowDisclosureChanged> {
public:
    ~MediaBrowserDirectoryViewRowDisclosureChanged() override;
};

}  // namespace host
