#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "desk/core/MainThread.h"
#include "desk/project/ProjectDocument.h"
#include "host/core/Messaging.h"

namespace desk {

/// Notices that the file of an open project is no longer what was read from it. Looks every few seconds at what
/// the folder store knows, and at once when a change of the folder is announced; where the store knows nothing,
/// and to be sure, a worker looks at the file. Never waits for the volume. UI thread.
class OutOfDateWatch : public host::Listener {
public:
    OutOfDateWatch();
    ~OutOfDateWatch() override;

    void ListenToMessage(const host::Message& message) override;

private:
    struct Look;

    void LookAtAll();
    void LookAt(const ProjectDocumentRef& document, bool alwaysAsksDisk);
    bool IsWorthALook(const ProjectDocument& document) const;
    void Begin(const ProjectDocumentRef& document);
    void Finish(const Look& look);

    MainThread::TimerID mTimer;
    /// By document: what a worker has found last that was not what had been read.
    std::map<const ProjectDocument*, ItemStatus> mDiffering;
    /// Documents at which a worker is looking; true when it is to look again.
    std::map<const ProjectDocument*, bool> mLooking;
    /// Gone with this object, so that what workers post later finds out.
    std::shared_ptr<OutOfDateWatch*> mSelf;
};

}  // namespace desk
