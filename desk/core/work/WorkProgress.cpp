#include "desk/core/work/WorkProgress.h"

#include <cerrno>

#include "host/files/FileException.h"

namespace desk {

void WorkProgress::SetItem(const host::UTF16String& item) {
    const std::scoped_lock lock(mMutex);
    mItem = item;
}

WorkProgress::State WorkProgress::Get() const {
    const std::scoped_lock lock(mMutex);
    return {mItem, mBytesDone, mBytesTotal};
}

void WorkProgress::ThrowIfCancelled(const char* operation, const std::string& path) const {
    if (IsCancelled()) throw host::FileException(operation, host::UTF8to16(path), ECANCELED);
}

}  // namespace desk
