#pragma once

#include <gtest/gtest.h>

#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/PosixFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/TemporaryFolder.h"

/// A profile folder on the real disk, workers, and a clock that the test moves.
class CoreFixture : public testing::Test {
protected:
    CoreFixture() : mBefore(desk::GetServices()) {
        desk::GetServices().mFileSystem = &mDisk;
        desk::GetServices().mWorkerPool = &mPool;
    }
    ~CoreFixture() override {
        mMain.RunUntilIdle();
        desk::GetServices().mFileSystem = mBefore.mFileSystem;
        desk::GetServices().mWorkerPool = mBefore.mWorkerPool;
    }
    /// Lets the system tell of changed files, and what waits for them to come to rest happen.
    void Settle() {
        mMain.RunUntilIdle();
        mMain.Advance(std::chrono::seconds(1));
    }

    desk::Services mBefore;
    TemporaryFolder mProfile;
    desk::PosixFileSystem mDisk;
    desk::WorkerPool mPool{2};
    ManualMainThread mMain;
};
