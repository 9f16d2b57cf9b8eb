#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>

#include "desk/core/log/Log.h"
#include "tests/support/LogExpectation.h"
#include "tests/volume/FaultyMount.h"
#include "tests/volume/Processes.h"
#include "tests/volume/Stack.h"
#include "tests/volume/UserOperations.h"

namespace {

constexpr const char* kCalls[] = {"link",  "create",   "unlink", "rename", "write",
                                  "fsync", "fsyncdir", "mkdir",  "rmdir"};
constexpr int kMostCalls = 5;

/// One call that fails during one operation on one kind of volume.
struct LostReply {
    UserOperation mOperation;
    FaultyMount::Kind mVolume;
    std::string mCall;
    bool mIsAfter = false;
    /// 0 for every call, whose replies are lost: where all is refused, nothing can be expected.
    int mNth = 0;

    std::string Rule() const {
        const std::string which = mNth == 0 ? ":1:5:" : ':' + std::to_string(mNth) + ":5:";
        return mCall + which + (mIsAfter ? "after" : "before") + (mNth == 0 ? "" : ":once");
    }
    std::string Name() const {
        return std::string(mOperation.mName) + ' ' + Rule() + " cache " +
               std::to_string(mVolume.mCacheSeconds) + (mVolume.mHasRenameFlags ? " flags" : "") +
               (mVolume.mHasLinks ? " links" : "");
    }
};

/// Of this process so far.
int CountFailures() {
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

/// Runs it in this process, which does nothing else; true when the call was made and failed.
bool Run(const LostReply& lostReply) {
    const ExpectLogged anything("");
    desk::Log(desk::LogLevel::Info, lostReply.Name());
    const int failuresBefore = CountFailures();
    const TemporaryFolder folder;
    const std::string production = folder.MakeFolder("North Shore");
    testproduction::Make(production, kUserProjects);
    FaultyMount mount(production, lostReply.mVolume, lostReply.Rule());
    if (!mount.IsMounted()) throw std::runtime_error(mount.ErrorText());
    std::vector<std::string> told;
    {
        Stack stack(mount.Path(), production);
        if (lostReply.mVolume.mCacheSeconds > 0) stack.WaitReally();
        lostReply.mOperation.mPrepare(stack);
        stack.Settle();
        EXPECT_THAT(stack.Told(), testing::IsEmpty());
        mount.Arm();
        told = RunOperation(lostReply.mOperation, stack);
        CheckOutcome(lostReply.mOperation, stack, told);
    }
    const bool isReached = mount.CountFailures() > 0;
    CheckNothingIsLeft(production, told);
    EXPECT_TRUE(isReached || told.empty()) << "it fails by itself";
    if (CountFailures() > failuresBefore) ADD_FAILURE() << "told: " << testing::PrintToString(told);
    return isReached;
}

/// Runs cases in processes of their own, several at a time: they mostly wait.
class Runner {
public:
    explicit Runner(int processes) : mProcesses(processes) {}

    /// From the call of `lostReply` on up to call `last`, as long as there is one.
    void Start(LostReply lostReply, int last) {
        while (static_cast<int>(mRunning.size()) >= mProcesses) WaitForOne();
        ::fflush(nullptr);
        auto output = std::make_shared<TemporaryFolder>();
        const pid_t process = StartProcess([&] { return RunAll(lostReply, last, output->Write("output")); });
        mRunning[process] = {lostReply.Name(), output};
    }
    void WaitForAll() {
        while (!mRunning.empty()) WaitForOne();
    }
    int CountReached() { return *mReached; }
    int CountFailed() const { return mFailed; }

private:
    struct Process {
        std::string mName;
        std::shared_ptr<TemporaryFolder> mOutput;
    };

    int RunAll(LostReply& lostReply, int last, const std::string& output) {
        ::freopen(output.c_str(), "w", stdout);
        ::dup2(STDOUT_FILENO, STDERR_FILENO);
        try {
            for (; lostReply.mNth <= last && Run(lostReply); ++lostReply.mNth) ++*mReached;
        } catch (const std::exception& exception) {
            ADD_FAILURE() << exception.what();
        }
        ::fflush(nullptr);
        return testing::Test::HasFailure();
    }

    void WaitForOne() {
        int status = 0;
        const pid_t process = ::waitpid(-1, &status, 0);
        const auto found = mRunning.extract(process);
        if (!found || status == 0) return;
        ++mFailed;
        std::cout << "FAILED: " << found.mapped().mName << '\n'
                  << found.mapped().mOutput->Read("output") << std::endl;
    }

    const int mProcesses;
    std::map<pid_t, Process> mRunning;
    int mFailed = 0;
    Shared<std::atomic<int>> mReached;
};

const char* Setting(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);
    return value ? value : otherwise;
}

std::vector<FaultyMount::Kind> MakeVolumes() {
    std::vector<FaultyMount::Kind> volumes;
    for (const int cacheSeconds : {0, 1, 5})
        for (const bool hasRenameFlags : {false, true})
            for (const bool hasLinks : {false, true})
                volumes.push_back({cacheSeconds, hasRenameFlags, hasLinks});
    return volumes;
}

/// Each case but for the number of the call.
std::vector<LostReply> MakeLostReplies() {
    std::vector<LostReply> all;
    for (const UserOperation& operation : MakeUserOperations())
        for (const FaultyMount::Kind& volume : MakeVolumes())
            for (const char* call : kCalls)
                for (const bool isAfter : {false, true}) {
                    all.push_back({operation, volume, call, isAfter, isAfter ? 0 : 1});
                    if (all.back().Name().find(Setting("LOST_REPLIES_ONLY", "")) == std::string::npos)
                        all.pop_back();
                }
    return all;
}

}  // namespace

/// A sample at random; all of them, for scripts/lost-replies.sh, when LOST_REPLIES is "all".
TEST(LostReplies, LeaveEverythingWholeAndWhatIsToldIsTrue) {
    if (!FaultyMount::IsPossible()) GTEST_SKIP() << "no /dev/fuse: lost replies were not tried";
    constexpr int kSample = 40;
    std::vector<LostReply> cases = MakeLostReplies();
    const auto begin = std::chrono::steady_clock::now();
    Runner runner(std::atoi(Setting("LOST_REPLIES_AT_A_TIME", "16")));
    if (Setting("LOST_REPLIES", "") == std::string("all")) {
        for (const LostReply& each : cases) runner.Start(each, kMostCalls);
    } else {
        const char* const seedText = std::getenv("LOST_REPLIES_SEED");
        const unsigned seed = seedText ? static_cast<unsigned>(std::atol(seedText)) : std::random_device()();
        std::cout << "seed " << seed << std::endl;
        std::mt19937 random(seed);
        // Many have not so many calls.
        while (runner.CountReached() < kSample && runner.CountFailed() == 0) {
            LostReply each = testproduction::PickOne(cases, random);
            each.mNth = std::max(each.mNth, static_cast<int>(random() % (kMostCalls + 1)));
            runner.Start(each, each.mNth);
        }
    }
    runner.WaitForAll();
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin);
    std::cout << runner.CountReached() << " lost replies and failures, " << runner.CountFailed() << " failed, "
              << seconds.count() << " s" << std::endl;
    EXPECT_EQ(runner.CountFailed(), 0);
}
