#include "desk/toolkit/NodeTimers.h"

#include <algorithm>
#include <string>

#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/toolkit/NodeImpl.h"

namespace desk {

NodeTimers::~NodeTimers() {
    mLifetime.End();
    MainThread* mainThread = GetServices().mMainThread;
    for (const auto& [id, timer] : mRunning)
        if (mainThread) mainThread->StopTimer(timer);
}

void NodeTimers::Install(double seconds, host::UI_TimerID id) {
    Remove(id);
    const std::chrono::milliseconds interval(std::max(1L, std::lround(seconds * 1000)));
    mRunning[id] = GetServices().mMainThread->StartTimer(interval, mLifetime.Guard([this, id] { Notify(id); }));
}

bool NodeTimers::Remove(host::UI_TimerID id) {
    const auto running = mRunning.find(id);
    if (running == mRunning.end()) return false;
    GetServices().mMainThread->StopTimer(running->second);
    mRunning.erase(running);
    return true;
}

void NodeTimers::Notify(host::UI_TimerID id) {
    if (!mRunning.contains(id)) return;
    const auto watch = mLifetime.Watch();
    if (mNode.NotifyTimer(id) || watch.expired() || !Remove(id)) return;
    Log(LogLevel::Error, "Nobody knows the timer " + std::to_string(id));
}

}  // namespace desk
