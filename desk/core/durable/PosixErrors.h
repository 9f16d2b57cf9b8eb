#pragma once

#include <cerrno>
#include <string>
#include <string_view>

#include "host/files/FileException.h"

namespace desk {

[[noreturn]] inline void ThrowFileException(std::string_view operation, const std::string& path,
                                            int systemError) {
    throw host::FileException(operation, host::UTF8to16(path), systemError);
}

/// Runs a file operation: 0, or the errno with which it failed.
template <class Operation>
int ErrorOf(Operation operation) {
    try {
        operation();
        return 0;
    } catch (const host::FileException& exception) {
        return exception.SystemError();
    }
}

/// Repeats a system call while a signal interrupts it.
template <class Call>
auto RetryInterrupted(Call call) {
    for (;;) {
        auto result = call();
        if (result != -1 || errno != EINTR) return result;
    }
}

/// True for the errors with which link(2) says that the volume, or this file on it, has no links.
inline bool HasNoLinks(int error) {
    return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
}

}  // namespace desk
