#pragma once

#include <chrono>

#include "desk/core/edges/MainThread.h"
#include "host/core/Export.h"
#include "host/core/Messaging.h"

namespace desk {

/// Runs a task again and again while any project is open: without one the program sleeps. UI thread.
class ZUHOST_API OpenProjectTimer : public host::Listener {
public:
    OpenProjectTimer(std::chrono::milliseconds interval, MainThread::Task task);
    ~OpenProjectTimer() override;

    void ListenToMessage(const host::Message& message) override;

private:
    /// Starts or stops the timer by the list of the open projects.
    void Update();

    const std::chrono::milliseconds mInterval;
    const MainThread::Task mTask;
    /// 0 while it does not run.
    MainThread::TimerID mTimer = 0;
};

}  // namespace desk
