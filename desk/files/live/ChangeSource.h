#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/core/Export.h"

namespace desk {

/// Tells of changes in watched folders, in the terms of inotify(7).
class ZUHOST_API ChangeSource {
public:
    struct Event {
        /// The watch; -1 with `IN_Q_OVERFLOW`.
        int mWatch = -1;
        std::uint32_t mMask = 0;
        /// The entry of the folder; empty when the folder itself is meant.
        std::string mName;
    };
    using Receiver = std::function<void(const std::vector<Event>& events)>;

    virtual ~ChangeSource() = default;
    /// Begins to hand events to `receiver`, on a thread of the source's own. Called once, before all else.
    virtual void Start(Receiver receiver) = 0;
    /// After it `receiver` is not called any more.
    virtual void Stop() = 0;
    /// Watches the folder at `path`: returns the watch (the same one for the same folder), or a negative errno.
    /// May wait for the volume; any thread.
    virtual int Add(const std::string& path) = 0;
    /// Ends a watch; unknown ones are ignored. Any thread.
    virtual void Remove(int watch) = 0;
};

/// The system's inotify.
ZUHOST_API std::unique_ptr<ChangeSource> CreateInotifySource();

}  // namespace desk
