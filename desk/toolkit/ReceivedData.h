#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/toolkit/DataTransfer.h"

class QMimeData;

/// What was read from a drag when it came.
struct host::OS_ReceiveData::Impl {
    /// By the panels' types.
    std::map<std::string, std::string, std::less<>> mBytes;
    UTF16StringVec mPaths;
    std::size_t mForeign = 0;
    bool mHasFiles = false;
    bool mIsOwn = false;
};

namespace desk {

/// Reads what a drag carries, once: the data of the panels' types and the list of files, of any length.
std::shared_ptr<const host::OS_ReceiveData> Receive(const QMimeData& data, bool isFromThisProcess);

/// Reads a list of files (RFC 2483): comments and empty lines count for nothing, what stands there twice counts
/// once.
ZUHOST_API void ReadURIList(std::string_view text, host::OS_ReceiveData::Impl& received);

}  // namespace desk
