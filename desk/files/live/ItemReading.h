#pragma once

#include <memory>
#include <set>
#include <vector>

#include "desk/core/names/FolderPath.h"
#include "desk/files/live/AnswerWatch.h"
#include "desk/files/live/FolderStore.h"

namespace desk {

/// What a worker has found out about an item.
struct ItemUpdate {
    host::UTF16String mName;
    /// A status or a lock record that is absent was not read; what was known of it still holds.
    ItemFacts mFacts;
    /// `mFacts.mHasLockFile` was looked at.
    bool mIsLockKnown = false;
    /// There is no such item.
    bool mIsGone = false;
    /// The item could not be read; it counts as unchanged.
    int mSystemError = 0;
};

/// True for what the store keeps by its name alone, unless it is known to be a folder.
bool IsProjectName(const host::UTF16String& name);

/// The path of a project's lock file, in bytes.
std::string LockPath(const FolderPath& folder, const host::UTF16String& projectName);

/// Reads an item's status and kind, and with `lookForLock` its lock; a question less for what is known to be a
/// link. May wait for the volume; any thread.
ItemUpdate ReadItem(const FolderPath& folder, const host::UTF16String& name, bool lookForLock,
                    bool isKnownLink = false);

/// Reads the items that belong to changed entries of a folder: an item itself, or the project whose lock file
/// an entry is. `call` is told of each answer. May wait for the volume; any thread.
std::vector<ItemUpdate> ReadChanged(const FolderPath& folder, const std::set<host::UTF16String>& names,
                                    AnswerWatch::Call& call);

/// True when something of what was read is not known.
bool IsNews(const ItemFacts& known, const ItemFacts& read, bool isLockKnown);

/// Brings `known` in line with what was read; false when nothing was new.
bool MergeFacts(ItemFacts& known, ItemFacts&& read, bool isLockKnown);

}  // namespace desk
