#pragma once

#include <QString>
#include <chrono>
#include <optional>
#include <string>

namespace desk {

class FileSystem;

/// Whether a folder can be shown as a production.
struct FolderCheck {
    enum class Problem { None, Missing, NoFolder, Unreadable, NoAnswer };
    Problem mProblem = Problem::None;
    /// The errno behind it; 0 for none.
    int mSystemError = 0;
};

/// Looks at `folder` and lists it. May wait for the volume. Any thread; never throws.
FolderCheck CheckFolder(FileSystem& fileSystem, const std::string& folder) noexcept;

/// The same on a thread of its own, which is left behind when the volume does not answer within `limit`.
/// `fileSystem` must outlive that thread.
FolderCheck CheckFolderWithin(FileSystem& fileSystem, const std::string& folder,
                              std::chrono::milliseconds limit);

/// What is wrong with `folder`, localised, in one line; empty for `Problem::None`. UI thread.
QString DescribeProblem(const FolderCheck& check, const std::string& folder);

/// `path` made absolute by the working directory, and normalised.
std::string ToAbsolutePath(const std::string& path);

}  // namespace desk
