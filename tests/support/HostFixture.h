#pragma once

#include <set>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/work/WorkerPool.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/TemporaryFolder.h"

/// Names of items, in UTF-8.
using Names = std::set<std::string>;

using desk::ErrorOf;

/// A temporary folder, and the host's services on it, which are the process's while the test runs.
class HostFixture : public testing::Test {
protected:
    using Operation = FaultyFileSystem::Operation;

    HostFixture() { desk::GetServices().mWorkerPool = &mPool; }
    ~HostFixture() override {
        mMain.RunUntilIdle();
        desk::GetServices().mWorkerPool = mPoolBefore;
    }

    /// What stands in a folder ("" is the root), hidden files too.
    Names NamesIn(const std::string& folder = {}) const {
        Names names;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path(folder)))
            names.insert(entry.path().filename());
        return names;
    }

    TemporaryFolder mFolder;
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    ScriptedDialogs mDialogs;
    ManualMainThread mMain;
    desk::WorkerPool* mPoolBefore = desk::GetServices().mWorkerPool;
    desk::WorkerPool mPool{4};
};
