#pragma once

#include <functional>
#include <map>
#include <memory>

#include "desk/core/work/Lifetime.h"
#include "desk/files/live/ReadingLane.h"
#include "desk/project/document/OpenProjectTimer.h"
#include "desk/project/document/ProjectDocument.h"
#include "host/core/Export.h"
#include "host/core/Messaging.h"

namespace desk {

/// When and how an open project is looked at on the disk: all of them every few seconds, and those in a folder
/// at once when a change of that folder is announced (for a link also that of its file); by workers, at each
/// project one look at a time. Never waits for the volume. UI thread.
class ZUHOST_API ProjectLooks : public host::Listener {
public:
    /// What comes of a look: called on the UI thread if the project is still open. True to look again at once.
    using Answer = std::function<bool(const ProjectDocumentRef&)>;
    /// The look itself. On a worker: it keeps no reference to the document.
    using Look = std::function<Answer()>;
    /// Called on the UI thread before each look; an empty one when there is nothing to look for.
    using Prepare = std::function<Look(const ProjectDocumentRef&, bool isAnnounced)>;

    explicit ProjectLooks(Prepare prepare);
    ~ProjectLooks() override;

    /// Looks now; while a look is under way, once more after it.
    void LookNow(const ProjectDocumentRef& document) { LookAt(document, true); }

    void ListenToMessage(const host::Message& message) override;

private:
    void LookAtAll();
    void LookAt(const ProjectDocumentRef& document, bool isAnnounced);
    void Finish(const ProjectDocument* document, const Answer& answer);

    const Prepare mPrepare;
    OpenProjectTimer mTimer;
    /// So that a volume that stands still never gets all workers.
    const std::shared_ptr<ReadingLane> mLane = std::make_shared<ReadingLane>();
    /// Documents at which a worker is looking; true when it is to look again.
    std::map<const ProjectDocument*, bool> mLooking;
    Lifetime mLifetime;
};

/// The open project that `document` points to; empty when it has been closed. UI thread.
ProjectDocumentRef FindOpenDocument(const ProjectDocument* document);

}  // namespace desk
