#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// What every failed operation on the disk throws: the operation, the path and the system's error.
class ZUHOST_API FileException : public std::runtime_error {
public:
    /// `operation` is a verb with its object ("list folder"); `systemError` is an errno value.
    FileException(std::string_view operation, const UTF16String& path, int systemError);
    ~FileException() override;

    /// As they were given.
    const std::string& Operation() const { return mOperation; }
    const UTF16String& Path() const { return mPath; }
    int SystemError() const { return mSystemError; }

private:
    std::string mOperation;
    UTF16String mPath;
    int mSystemError;
};

}  // namespace host
