#pragma once

#include <chrono>
#include <memory>

#include "host/toolkit/DataTransfer.h"

namespace desk {

/// What hovers over a target, and since when: a drop counts once the target has been under the pointer for a
/// moment. UI thread.
class DropRest {
public:
    /// Another target, from now on.
    void Restart();
    bool HasRested() const;

    /// Tells the user why a drop did nothing.
    static void TellTooQuick();

private:
    std::chrono::steady_clock::time_point mSince{};
};

}  // namespace desk
