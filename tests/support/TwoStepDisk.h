#pragma once

#include <unistd.h>

#include "desk/core/durable/PosixErrors.h"
#include "tests/support/FaultyFileSystem.h"

/// A disk that replaces a file by a removal and a rename, of which the next `mFailures` renames fail.
class TwoStepDisk : public FaultyFileSystem {
public:
    void Rename(const std::string& from, const std::string& to) override {
        if (mFailures == 0) return FaultyFileSystem::Rename(from, to);
        --mFailures;
        ::unlink(to.c_str());
        desk::ThrowFileException("rename", from, mError);
    }
    bool WaitForCaches(const std::string& path) noexcept override {
        return mForgetsSoon && FaultyFileSystem::WaitForCaches(path);
    }
    int mFailures = 0, mError = EEXIST;
    bool mForgetsSoon = true;
};
