#pragma once

#include <functional>
#include <memory>

#include "host/core/Export.h"

namespace desk {

/// Tasks that workers run one at a time, in the order in which they were given: what changes one file over and
/// over. What was given is run also when this is gone by then. Any thread.
class ZUHOST_API OrderedTasks {
public:
    using Task = std::function<void()>;

    OrderedTasks();
    /// An exception of `task` is logged.
    void Submit(Task task);

private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace desk
