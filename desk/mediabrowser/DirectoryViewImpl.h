#pragma once

#include <absl/container/flat_hash_set.h>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "desk/core/work/Lifetime.h"
#include "desk/files/live/FolderReadAhead.h"
#include "desk/files/live/FolderStore.h"
#include "desk/mediabrowser/HeldDeliveries.h"
#include "desk/mediabrowser/RowName.h"
#include "host/mediabrowser/MediaBrowserDirectoryView.h"

struct host::MediaBrowserDirectoryView::DirectoryImpl {
    using Row = UI_MultiColumnTreeRow;

    /// What is kept of a folder whose content was asked for; of the root under the null row.
    struct Folder {
        bool mIsBusy = false;
        bool mHasContent = false;
        /// All its rows come from parts of one content, each of which names other items.
        bool mIsComingInParts = false;
        /// Child rows are found by the index: there are many.
        bool mHasIndex = false;
        absl::flat_hash_set<Row*, desk::RowByName, desk::RowByName> mIndex;
    };

    DirectoryImpl(MediaBrowserDirectoryView& view, std::shared_ptr<MediaBrowserContentManager> contentManager);
    ~DirectoryImpl();

    /// Those that the base answers; derived views set the others.
    void SetCallbacks();
    /// All: the tree may live longer than the view.
    void ClearCallbacks();

    // Rows and paths (MediaBrowserDirectoryView_Rows.cpp).

    UTF16String PathOf(const Row* row) const;
    /// The row of a folder, by its path below the root; false when there is none. The root's row is null.
    bool FindRow(std::u16string_view path, Row*& row) const;
    Row* FindChild(const Row* parent, std::u16string_view name) const;
    /// From now on child rows are found by the index, if there are going to be many: `count` in all.
    void ReserveRows(const Row* parent, std::size_t count);
    /// True when no item of a delivery that has just come can have a row yet.
    bool IsEachNew(const Row* parent, const ContentDelivery& delivery);
    void Record(Row& row, std::u16string_view name);
    void ForgetRow(Row& row);
    /// Takes the rows, and those below them, out of the maps.
    void ForgetRowAndBelow(const RowRef& row);
    static bool IsShown(const Row* row);

    // Expansions (MediaBrowserDirectoryView_Expansion.cpp).

    /// Folders that are being opened one after another.
    struct Expansion {
        std::vector<UTF16String> mNames;
        std::size_t mOpened = 0;
        /// The folder that was opened last; empty for the root.
        RowRef mRow;
        ExpansionCallback mCompletion;
    };
    enum class Progress { Waits, IsThere, Fails };
    /// Opens what has come.
    Progress Advance(Expansion& expansion);
    void AdvanceExpansions();
    void CompleteExpansion(ExpansionCallback completion, const RowRef& row);
    bool IsAwaited(const Row* row) const;

    // Contents (MediaBrowserDirectoryView_Content.cpp).

    void Request(const UTF16String& path, Row* row, const UTF16String& context);
    void Receive(const desk::FolderStore::Delivery& delivery);
    void Hold(bool hold);
    void TellWhyEmpty(int systemError);
    void SetBusy(Folder& folder, bool busy);
    /// Makes rows for the items at these places of `content`.
    void Create(Row* parent, const DirectoryContent& content, const std::vector<std::uint32_t>& places);
    void Remove(const RowVec& rows);
    void ListAgainOrMark(const UTF16String& path);
    void OpenStateChanged(Row& row, bool open);
    void DropFactsOfRowsScrolledAway();

    MediaBrowserDirectoryView& mView;
    std::shared_ptr<MediaBrowserContentManager> mContentManager;
    RefPtr<MediaBrowserMultiColumnTree> mTree;
    StationID mStation;
    UTF16String mRoot;
    std::unordered_map<const Row*, Folder> mFolders;
    /// Open folders that have changed while they were not shown, and closed ones.
    std::unordered_set<const Row*> mStale;
    std::vector<std::shared_ptr<Expansion>> mExpansions;
    /// Counts on when all expansions end: what those of an earlier period have led to is dropped.
    unsigned mExpansionPeriod = 0;
    std::shared_ptr<desk::FolderReadAhead> mReadAhead;
    /// While it is set, deliveries wait here.
    bool mIsHolding = false;
    desk::HeldDeliveries mHeld;
    /// When it may be asked next what is visible.
    std::chrono::steady_clock::time_point mNextLookAtVisible{};
    int mFirstVisible = 0;
    int mLastVisible = -1;
    /// Gone when the view is: what comes for it then is dropped.
    desk::Lifetime mLifetime;
};
