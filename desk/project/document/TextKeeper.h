#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "desk/core/work/Lifetime.h"
#include "desk/core/work/OrderedTasks.h"
#include "desk/project/document/KeptText.h"
#include "desk/project/document/OpenProjectTimer.h"
#include "desk/project/document/ProjectDocument.h"
#include "host/core/Export.h"
#include "host/core/Messaging.h"

namespace desk {

/// Keeps the unsaved text of the open projects in the profile while it is unsaved, so that a program that is
/// killed leaves it to the next one (`docs/recovery.md`). Every few seconds what has changed is written by a
/// worker; typing waits for nothing. It goes when the project has no unsaved changes any more or is closed,
/// which both take a decision of the user: so this is to be destroyed before the window and the document
/// manager, which close what is open without one. Recovered text that is undone is not decided about: it stays
/// kept, also when the project is closed, and is listed then. UI thread.
class ZUHOST_API TextKeeper : public host::Listener {
public:
    /// With the time that a write takes, what is kept is at most five seconds old.
    static constexpr std::chrono::milliseconds kInterval{4000};

    /// `folder`: bytes; made when something is kept.
    explicit TextKeeper(std::string folder);
    ~TextKeeper() override;

    using Listed = std::function<void(std::vector<KeptTextFile>)>;
    /// Tells what other programs keep that are not known to be running, and what this one keeps of no open
    /// project, the oldest text first; later, and not when this is gone by then. What cannot be read is logged.
    void List(Listed listed);
    /// The user has saved or discarded the text that another program kept at `path`.
    void Remove(const std::string& path);
    /// The unsaved changes of `document` are the text that another program kept at `path`: it is this program's
    /// from now on, and goes with them. What was kept of the document before, recovered text that was undone,
    /// stays, and is listed.
    void Adopt(const ProjectDocumentRef& document, const std::string& path);

    void ListenToMessage(const host::Message& message) override;

private:
    /// What is kept of a document.
    struct Kept {
        std::string mPath;
        /// The state of the document that was written last, or is being written.
        std::uint64_t mEdits = 0;
        host::UTF16String mProject;
        ProjectContentPtr mBase;
        bool mIsWritten = false;
        bool mIsWriting = false;
        bool mHasFailed = false;
        /// It is recovered text that the document does not show at present.
        bool mIsUndone = false;
    };
    /// What a document shows.
    struct Shown {
        ProjectContentPtr mContent;
        bool mIsBasedOnOlder;
        host::UTF16String mText;
    };
    /// What came of a write.
    struct Outcome {
        bool mIsTooLarge = false;
        /// Of the disk; empty when it did not fail.
        std::string mError;
    };

    void KeepAll();
    void Keep(ProjectDocument& document);
    void Write(ProjectDocument& document, Kept& kept);
    static Outcome WriteFile(const std::string& path, KeptText text, const Shown& shown);
    void NoteOutcome(const ProjectDocument* document, const std::string& path, const Outcome& outcome);
    void NoteState(const ProjectDocument& document);
    void NoteClosed(const ProjectDocument* document);
    void Forget(const ProjectDocument* document);
    void TellNotKept(const host::UTF16String& project, const Outcome& outcome);

    const std::string mFolder;
    const LockRecord mOwner;
    std::map<const ProjectDocument*, Kept> mKept;
    OrderedTasks mTasks;
    OpenProjectTimer mTimer;
    Lifetime mLifetime;
};

}  // namespace desk
