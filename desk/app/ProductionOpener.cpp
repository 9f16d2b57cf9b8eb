#include "desk/app/ProductionOpener.h"

#include <unistd.h>

#include <chrono>
#include <utility>

#include "desk/app/CopiesUnderWay.h"
#include "desk/app/FolderCheck.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/production/Production.h"
#include "desk/toolkit/Theme.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

struct Outcome {
    std::string mFolder;
    FolderCheck mCheck;
    /// What kept the folder from being made.
    std::string mError;
};

Outcome Prepare(const ProductionOpener::MakeFolder& makeFolder) {
    Outcome outcome;
    try {
        outcome.mFolder = makeFolder();
        outcome.mCheck = CheckFolder(*GetServices().mFileSystem, outcome.mFolder);
    } catch (const std::exception& exception) {
        outcome.mError = exception.what();
    }
    return outcome;
}

/// Closes the projects of the open production; false when the user wants to keep one open, or copies going.
bool LeaveOpenProduction() {
    const Production& production = Production::Instance();
    ProjectDocuments* documents = ProjectDocuments::Instance();
    if (!documents || !production.IsOpen()) return true;
    return CopiesUnderWay::MayBeCancelled() && documents->CloseProjectsIn(production.GetFolder());
}

ProductionOpener::Result Finish(const Outcome& outcome) {
    ProductionOpener::Result result{outcome.mFolder, DescribeProblem(outcome.mCheck, outcome.mFolder),
                                    outcome.mCheck.mProblem == FolderCheck::Problem::Missing};
    if (!outcome.mError.empty()) result.mProblem = ToDisplayText(host::UTF8to16(outcome.mError));
    if (!result.mProblem.isEmpty()) {
        Log(LogLevel::Info, "A production was not opened: " + ToUTF8(result.mProblem));
        return result;
    }
    const host::UTF16String folder = host::PathUtils::ToNormalizedPath(host::UTF8to16(outcome.mFolder));
    if (Production::Instance().GetFolder() == folder) return result;
    result.mIsCancelled = !LeaveOpenProduction();
    if (!result.mIsCancelled) Production::Instance().Open(folder);
    return result;
}

/// Work on the open production's files comes to its end first.
void CallWhenIdle(const std::function<void()>& call) {
    constexpr std::chrono::milliseconds kBetweenTries(100);
    if (!IsLongWorkRunning()) return call();
    GetServices().mMainThread->PostDelayed([call] { CallWhenIdle(call); }, kBetweenTries);
}

std::string MakeProductionFolder(const std::string& folder, const std::string& trashName) {
    FileSystem& fileSystem = *GetServices().mFileSystem;
    fileSystem.CreateFolder(folder);
    try {
        fileSystem.CreateFolder(folder + '/' + trashName);
    } catch (...) {
        rmdir(folder.c_str());
        throw;
    }
    return folder;
}

}  // namespace

struct ProductionOpener::State {
    unsigned mRequest = 0;
    bool mIsGone = false;
    /// Of the request that is under way; empty when none is.
    Done mDone;
};

ProductionOpener::ProductionOpener() : mState(std::make_shared<State>()) {}

ProductionOpener::~ProductionOpener() {
    mState->mIsGone = true;
    mState->mDone = {};
}

void ProductionOpener::Open(const std::string& folder, Done done) {
    Open(MakeFolder([folder] { return folder; }), std::move(done));
}

void ProductionOpener::Create(const std::string& folder, const std::string& trashName, Done done) {
    Open(MakeFolder([=] { return MakeProductionFolder(folder, trashName); }), std::move(done));
}

void ProductionOpener::Open(MakeFolder makeFolder, Done done) {
    const unsigned request = ++mState->mRequest;
    if (const Done earlier = std::exchange(mState->mDone, std::move(done)))
        GetServices().mMainThread->Post([earlier, state = mState] {
            Result superseded;
            superseded.mIsSuperseded = true;
            if (!state->mIsGone) earlier(superseded);
        });
    const auto deliver = [request, state = mState](const Outcome& outcome) {
        if (state->mIsGone || state->mRequest != request) return;
        const Done last = std::exchange(state->mDone, {});
        last(Finish(outcome));
    };
    GetServices().mWorkerPool->Submit([deliver, makeFolder = std::move(makeFolder)] {
        const Outcome outcome = Prepare(makeFolder);
        GetServices().mMainThread->Post([=] { CallWhenIdle([=] { deliver(outcome); }); });
    });
}

bool ProductionOpener::IsBusy() const {
    return mState->mDone != nullptr;
}

}  // namespace desk
