#include "host/files/File.h"

#include <cerrno>

#include "desk/core/durable/Presence.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/live/KnownFacts.h"
#include "host/files/FileException.h"

namespace host {

File::File(const UTF16String& path) {
    const desk::KnownItem known = desk::FindKnownItemAndRequest(path);
    mExists = !known.mIsAbsent;
    if (known.mIsAbsent || known.mIsAwaited) return;
    auto keep = [this](const desk::ItemStatus& status) {
        mModified = desk::ToSeconds(status.mModified);
        if (status.mCreated) mCreated = desk::ToSeconds(*status.mCreated);
        mSize = status.mSize;
    };
    if (known.mFacts) {
        if (known.mFacts->mStatus) keep(*known.mFacts->mStatus);
        return;
    }
    try {
        keep(desk::GetServices().mFileSystem->Status(UTF16to8(path), true));
    } catch (const FileException& exception) {
        mExists = !desk::IsAbsence(exception.SystemError());
        if (!mExists) return;
        mSystemError = exception.SystemError();
        mPath = path;
    }
}

std::optional<std::time_t> File::Modified() const {
    ThrowIfRefused();
    return mModified;
}

std::optional<std::time_t> File::Created() const {
    ThrowIfRefused();
    return mCreated;
}

std::optional<std::uint64_t> File::Size() const {
    ThrowIfRefused();
    return mSize;
}

void File::ThrowIfRefused() const {
    if (mSystemError != 0) throw FileException("read status of", mPath, mSystemError);
}

}  // namespace host
