#pragma once

#include <string>

namespace desk {

/// The sample production that a first start shows, "North Shore" in `folder`: about 40 projects in nested
/// folders, some locked by other users, an empty folder, one with 500 projects, and the trash. Makes it when it
/// is not there, complete or not at all, and returns its path. `trashName` is the trash folder's name (bytes).
/// Throws `host::FileException`. May wait for the disk. Any thread.
std::string EnsureSampleProduction(const std::string& folder, const std::string& trashName);

}  // namespace desk
