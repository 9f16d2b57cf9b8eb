#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace desk {

/// Owns a file descriptor.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) : mDescriptor(descriptor) {}
    ~FileDescriptor() { Close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : mDescriptor(std::exchange(other.mDescriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(mDescriptor, other.mDescriptor);
        return *this;
    }

    int Get() const { return mDescriptor; }
    bool IsOpen() const { return mDescriptor >= 0; }

    /// Closes now; returns 0, or the errno with which the system reports that written data was lost. An
    /// interrupted close has closed (Linux).
    int Close() {
        if (!IsOpen()) return 0;
        int result = ::close(std::exchange(mDescriptor, -1));
        return result == 0 || errno == EINTR ? 0 : errno;
    }

private:
    int mDescriptor;
};

}  // namespace desk
