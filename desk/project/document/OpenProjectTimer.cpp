#include "desk/project/document/OpenProjectTimer.h"

#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/project/document/OpenProjectList.h"

namespace desk {

OpenProjectTimer::OpenProjectTimer(std::chrono::milliseconds interval, MainThread::Task task)
    : mInterval(interval), mTask(std::move(task)) {
    host::AddListener(host::kBackendProjectActivationStationID, this);
    Update();
}

OpenProjectTimer::~OpenProjectTimer() {
    host::RemoveListener(host::kBackendProjectActivationStationID, this);
    if (mTimer != 0) GetServices().mMainThread->StopTimer(mTimer);
}

void OpenProjectTimer::ListenToMessage(const host::Message&) {
    Update();
}

void OpenProjectTimer::Update() {
    const bool isWanted = !OpenProjectList::Instance().Get().empty();
    if (isWanted == (mTimer != 0)) return;
    MainThread& mainThread = *GetServices().mMainThread;
    if (isWanted)
        mTimer = mainThread.StartTimer(mInterval, mTask);
    else
        mainThread.StopTimer(std::exchange(mTimer, 0));
}

}  // namespace desk
