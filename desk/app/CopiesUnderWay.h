#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "host/core/Messaging.h"

namespace desk {

/// Keeps copies in the user's sight: brings up the progress panel, without the keyboard's focus, when copies
/// are still being made after `kLong`, and when one has failed. A panel that the user closes then stays closed
/// until there is another reason; one that the user has not opened goes after the last job, unless one has
/// failed. UI thread.
class CopiesUnderWay : private host::Listener {
public:
    static constexpr std::chrono::milliseconds kLong{1000};
    /// So long the end of the last job can be seen.
    static constexpr std::chrono::milliseconds kShownAfter{1000};

    CopiesUnderWay();
    ~CopiesUnderWay() override;

    /// True when no copies are being made, or the user agrees that those are cancelled that are not finished.
    static bool MayBeCancelled();

private:
    void ListenToMessage(const host::Message& message) override;
    bool HasNewFailure();
    void ShowPanel();
    void HidePanel();
    void DoAfter(std::chrono::milliseconds time, void (CopiesUnderWay::*action)());

    bool mIsBusy = false;
    /// The newest job that is known to have failed.
    std::uint64_t mLastFailed = 0;
    /// What is posted by an earlier busy time is void.
    std::shared_ptr<unsigned> mBusyTime = std::make_shared<unsigned>(0);
};

}  // namespace desk
