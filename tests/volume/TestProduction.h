#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <random>

#include "desk/core/edges/Desktop.h"
#include "tests/support/TemporaryFolder.h"

/// A production whose projects say themselves which they are and whether they are whole.
namespace testproduction {

/// The bytes of project `number` in its `version`: some lines (1 to 30 KB), of which each says both.
std::string MakeContent(int number, int version);

struct Identity {
    int mNumber = 0, mVersion = 0;
    bool operator==(const Identity&) const = default;
};
/// Absent for what is no whole project.
std::optional<Identity> Identify(const std::string& bytes);

/// A temporary folder in memory, where there is such a place, like all that are made after it: fsync costs
/// nothing there, and more happens in the same time.
TemporaryFolder MakeFolderInMemory();

/// Makes projects 0 to `projects` - 1, in version 0, spread over some folders of `folder`.
void Make(const std::string& folder, int projects);

/// What stands in a production, its trash too.
struct Findings {
    /// The paths of each project, by its number.
    std::map<int, std::vector<std::string>> mProjects;
    std::map<int, int> mVersions;
    /// Files under a visible name that are no whole project.
    std::vector<std::string> mBroken;
    /// Lock files, guards and temporaries: all hidden names but the trash's records.
    std::vector<std::string> mHidden;

    /// One line for each project that is missing or, unless `mayBeCopied`, stands in two places, and for each
    /// broken file; empty when projects 0 to `projects` - 1 are all there.
    std::string DescribeLosses(int projects, bool mayBeCopied = false) const;
};
Findings Examine(const std::string& folder);

/// The visible folders and projects at and below `folder`, as far as they can be listed while others move them.
struct Items {
    std::vector<std::string> mFolders, mProjects;
};
Items List(const std::string& folder);

/// Removes what dead processes have left, as whoever lists the folders of the production does and moves
/// something to its trash; an empty lock at the second look.
void Sweep(const std::string& production, const desk::Desktop& desktop);

/// One of `items`, which is not empty.
template <class Item>
const Item& PickOne(const std::vector<Item>& items, std::mt19937& random) {
    return items[random() % items.size()];
}

}  // namespace testproduction
