#pragma once

#include <map>

#include "desk/core/edges/MainThread.h"
#include "desk/core/work/Lifetime.h"
#include "host/toolkit/UI_Node.h"

namespace desk {

/// The timers of a node. UI thread.
class NodeTimers {
public:
    explicit NodeTimers(host::UI_Node::Impl& node) : mNode(node) {}
    ~NodeTimers();

    void Install(double seconds, host::UI_TimerID id);
    /// False when there was no such timer.
    bool Remove(host::UI_TimerID id);

private:
    void Notify(host::UI_TimerID id);

    host::UI_Node::Impl& mNode;
    std::map<host::UI_TimerID, MainThread::TimerID> mRunning;
    Lifetime mLifetime;
};

}  // namespace desk
