#include "desk/app/CopiesUnderWay.h"

#include <algorithm>
#include <utility>

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/framework/DockWorkspace.h"
#include "desk/project/production/CopyQueue.h"
#include "host/core/Localizer.h"
#include "host/framework/Identifiers.h"
#include "host/framework/TabView.h"
#include "host/framework/Workspace.h"

namespace desk {
CopiesUnderWay::CopiesUnderWay() {
    host::AddListener(kStation_CopyQueue, this);
}

CopiesUnderWay::~CopiesUnderWay() {
    host::RemoveListener(kStation_CopyQueue, this);
    ++*mBusyTime;
}

bool CopiesUnderWay::MayBeCancelled() {
    const CopyQueue* queue = CopyQueue::Current();
    if (!queue || !queue->IsBusy()) return true;
    const Answer answer = GetServices().mDialogs->Ask(
        {.mTitle = host::ZString("$$$/Desk/Copies/UnderWayTitle=Projects Are Being Copied"),
         .mText =
             host::ZString("$$$/Desk/Copies/UnderWayText=The copies that are not finished will be cancelled."),
         .mButtons = {host::ZString("$$$/Desk/Copies/KeepCopying=Keep Copying"),
                      host::ZString("$$$/Desk/Copies/CancelCopies=Cancel Copies")},
         .mCancel = 0,
         .mIsWarning = true});
    return answer.mButton == 1;
}

void CopiesUnderWay::ListenToMessage(const host::Message& message) {
    const CopyQueue* queue = CopyQueue::Current();
    if (!queue || !host::MessageCast<CopyQueueChangedMessage>(message)) return;
    if (HasNewFailure()) ShowPanel();
    const bool wasBusy = std::exchange(mIsBusy, queue->IsBusy());
    if (mIsBusy == wasBusy) return;
    ++*mBusyTime;
    mIsBusy ? DoAfter(kLong, &CopiesUnderWay::ShowPanel) : DoAfter(kShownAfter, &CopiesUnderWay::HidePanel);
}

void CopiesUnderWay::DoAfter(std::chrono::milliseconds time, void (CopiesUnderWay::*action)()) {
    GetServices().mMainThread->PostDelayed(
        [this, action, busyTime = *mBusyTime, current = mBusyTime] {
            if (*current == busyTime) (this->*action)();
        },
        time);
}

void CopiesUnderWay::ShowPanel() {
    host::Workspace* workspace = host::Workspace::Instance().GetPtr();
    if (!workspace) return;
    host::TabView* panel = workspace->FindFirstTabViewOfType(host::kProgressHandlerID);
    if (!panel) panel = workspace->CreateOrReanimateTabView(host::kProgressHandlerID, host::PropertyList());
    if (panel) panel->BringToFront(false, false);
}

void CopiesUnderWay::HidePanel() {
    auto* workspace = dynamic_cast<DockWorkspace*>(host::Workspace::Instance().GetPtr());
    const auto hasFailed = [](const CopyJob& job) { return job.HasFailed(); };
    if (!workspace || std::ranges::any_of(CopyQueue::Current()->GetJobs(), hasFailed)) return;
    if (!workspace->IsOpenedByUser(host::kProgressHandlerID)) workspace->ClosePanel(host::kProgressHandlerID);
}

bool CopiesUnderWay::HasNewFailure() {
    std::uint64_t newest = mLastFailed;
    for (const CopyJob& job : CopyQueue::Current()->GetJobs())
        if (job.HasFailed()) newest = std::max(newest, job.mID);
    return std::exchange(mLastFailed, newest) != newest;
}

}  // namespace desk
