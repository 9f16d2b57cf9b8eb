#pragma once

#include <cerrno>
#include <string>
#include <string_view>

#include "host/files/FileException.h"

namespace desk {

[[noreturn]] inline void ThrowFileException(std::string_view operation, const std::string& path, int systemError) {
    throw host::FileException(operation, host::UTF8to16(path), systemError);
}

/// Repeats a system call while a signal interrupts it.
template <class Call>
auto RetryInterrupted(Call call) {
    for (;;) {
        auto result = call();
        if (result != -1 || errno != EINTR) return result;
    }
}

}  // namespace desk
