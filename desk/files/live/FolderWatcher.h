#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "desk/files/live/ChangeCollector.h"
#include "desk/files/live/ChangeSource.h"

namespace desk {

/// How a folder is followed.
struct Following {
    enum class How { Not, Watched, Polled };
    How mHow = How::Not;
    /// Polled because the system's limit of watches is reached.
    bool mIsLimit = false;
};

/// The watched folders, by path and by watch. Paths are the bytes of the disk. Any thread.
class FolderWatcher {
public:
    FolderWatcher(std::unique_ptr<ChangeSource> source, std::shared_ptr<ChangeCollector> collector);
    ~FolderWatcher();

    /// Ends all watching; nothing is collected after it.
    void Stop();
    /// Folders at and below `root` are on the volume of `root`, as far as a volume that must be polled goes: it
    /// is asked once. Undone by `RemoveRoot`.
    void AddRoot(const std::string& root);
    void RemoveRoot(const std::string& root);
    /// Watches a folder, or says that it has to be polled. May wait for the volume.
    Following Follow(const std::string& folder);
    void Unfollow(const std::string& folder);

private:
    struct Root {
        std::string mPath;
        /// Absent until the volume has been asked.
        std::optional<bool> mIsPolled;
    };

    bool MustPoll(const std::string& folder);
    void TakeWatch(const std::string& folder, int watch, FolderChanges& changes);
    void Receive(const std::vector<ChangeSource::Event>& events);
    void ReceiveEvent(const ChangeSource::Event& event, FolderChanges& changes);
    void Lose(int watch, FolderChanges& changes);
    void LoseBelow(const std::string& folder, FolderChanges& changes);
    void LosePath(std::map<std::string, int>::iterator path, FolderChanges& changes);

    std::shared_ptr<ChangeCollector> mCollector;
    std::mutex mMutex;
    std::vector<Root> mRoots;
    std::map<std::string, int> mWatches;
    /// One folder may be followed by several paths (links).
    std::unordered_map<int, std::vector<std::string>> mPaths;
    /// Watches that are being added, and what unknown watches tell meanwhile.
    int mBeginning = 0;
    std::vector<ChangeSource::Event> mEarly;
    std::unique_ptr<ChangeSource> mSource;
};

}  // namespace desk
