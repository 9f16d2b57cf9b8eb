#pragma once

#include <sys/resource.h>

#include <csignal>

/// Files cannot grow beyond `bytes` while it exists: the disk is full for this process.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : mHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit limit{bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &mBefore);
        std::signal(SIGXFSZ, mHandler);
    }

private:
    void (*mHandler)(int);
    rlimit mBefore;
};
