#pragma once

#include <atomic>

#include "host/core/Trace.h"

namespace HandlerSharedProjects {

using namespace host;

/// A place in the code that traces: keeps the host's answer whether to trace until the host's trace settings
/// change. One static object a place. Any thread.
class TraceSite {
public:
    /// Traces what `makeText` returns, with a line break; it is called only when traces are wanted.
    template <class MakeText>
    void Write(MakeText makeText) {
        if (IsEnabled()) Trace(kLevel, kCategory, makeText() + u"\n");
    }

private:
    static constexpr int kLevel = 8;
    static constexpr char kCategory[] = "SharedProjects";

    bool IsEnabled() {
        const int changeCount = TraceChangeCount();
        if (mChangeCount.exchange(changeCount) != changeCount)
            mIsEnabled.exchange(TraceEnabled(kCategory, kLevel, true));
        return mIsEnabled.load();
    }

    /// When `mIsEnabled` was asked; no count is negative.
    std::atomic<int> mChangeCount = -1;
    std::atomic<bool> mIsEnabled = false;
};

}  // namespace HandlerSharedProjects
