#pragma once

#include <optional>
#include <string>

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/files/FileException.h"

namespace desk {

class WorkProgress;

/// The copying of one project, as a worker does it.
struct ZUHOST_API ProjectCopy {
    host::UTF16String mSource;
    /// Where it is to land; after `Run` the name that it was given.
    host::UTF16String mDestination;
    /// A destination that is taken gets a number.
    bool mMayRename = false;

    /// Why it was not copied.
    std::optional<host::FileException> mError;
    /// Whether it was copied nevertheless is not known.
    bool mIsInDoubt = false;
    /// Likewise, in words, when it was no error of the disk.
    std::string mOtherError;

    /// Copies; never throws. What can be locked under its name, and is a file, is copied: a link's target in
    /// place of the link. Waits for the volume. Any thread.
    void Run(WorkProgress& progress) noexcept;

    // What came of it. UI thread.
    bool HasFailed() const { return mError || !mOtherError.empty(); }
    /// Localised; empty when it has not failed.
    host::UTF16String DescribeFailure() const;
    /// Tells the user and the log.
    void TellFailure() const;

private:
    void Copy(WorkProgress& progress);
};

}  // namespace desk
