#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace desk {

/// Belongs to an object whose tasks come back later, from workers or after a while: what is guarded does
/// nothing once the object is gone. Such tasks run on the thread on which the object goes, the UI thread.
class Lifetime {
public:
    /// Calls `task` while the object lives; after that gives what its result is by default.
    template <class Task>
    auto Guard(Task task) const {
        return [watch = std::weak_ptr(mToken), task = std::move(task)](auto&&... arguments) {
            using Result = std::invoke_result_t<const Task&, decltype(arguments)...>;
            if (watch.expired()) return Result();
            return task(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    /// Has expired once the object is gone: for a function that may end the object that it belongs to.
    std::weak_ptr<const void> Watch() const { return mToken; }

    /// From now on the object counts as gone.
    void End() { mToken.reset(); }

private:
    std::shared_ptr<const void> mToken = std::make_shared<char>();
};

}  // namespace desk
