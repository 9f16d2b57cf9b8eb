#include <gmock/gmock.h>

#include "tests/support/LogExpectation.h"
#include "tests/volume/Stack.h"
#include "tests/volume/UserOperations.h"

namespace {

using Lies = FaultyFileSystem::Lies;
using Operation = FaultyFileSystem::Operation;

/// What a disk can do, and what it answers after a lost reply.
struct Volume {
    bool mHasRenameFlags;
    bool mHasLinks;
    Lies mLies;

    /// For longer than anybody waits.
    bool KeepsNames() const { return mLies == Lies::NamesForLong || mLies == Lies::NamesForLongUnknown; }
};

class EveryFault : public testing::TestWithParam<UserOperation> {
protected:
    /// Runs the operation with its `nth` step failing; false when it has not so many.
    bool RunWithFault(const Volume& volume, int nth, bool isAfter) {
        const std::unique_ptr<Stack> stack = std::make_unique<Stack>();
        FaultyFileSystem& disk = stack->mVolume;
        testproduction::Make(stack->mProduction, kUserProjects);
        disk.SetHasRenameFlags(volume.mHasRenameFlags);
        disk.SetHasLinks(volume.mHasLinks);
        disk.SkipFlushes();
        GetParam().mPrepare(*stack);
        stack->Settle();
        EXPECT_THAT(stack->Told(), testing::IsEmpty());
        disk.ResetCounts();
        disk.SetLies(volume.mLies);
        isAfter ? disk.FailAfter(Operation::Any, nth, EIO) : disk.Fail(Operation::Any, nth, EIO);
        const std::vector<std::string> told = RunOperation(GetParam(), *stack);
        const bool isReached = disk.Count(Operation::Any) >= nth;
        const bool isDone = CheckOutcome(GetParam(), *stack, told, volume.KeepsNames());
        EXPECT_TRUE(isReached || (isDone && told.empty())) << "it fails by itself";
        for (const host::ProjectRef& project : host::GetOpenProjectList())
            EXPECT_TRUE(stack->mDocuments->CloseProject(project, false));
        stack->Settle();
        CheckNothingIsLeft(stack->mProduction, told, volume.KeepsNames());
        if (HasFailure()) ADD_FAILURE() << "told: " << testing::PrintToString(told);
        return isReached;
    }

    void RunWithEachFault(const Volume& volume, bool isAfter) {
        SCOPED_TRACE(std::string(volume.mHasRenameFlags ? "with" : "without") + " rename flags, " +
                     (volume.mHasLinks ? "with" : "without") + " links, lies " +
                     std::to_string(static_cast<int>(volume.mLies)));
        int nth = 1;
        for (bool isReached = true; isReached && !HasFailure(); ++nth) {
            SCOPED_TRACE((isAfter ? "after step " : "before step ") + std::to_string(nth));
            isReached = RunWithFault(volume, nth, isAfter);
        }
        EXPECT_TRUE(nth > 2 || HasFailure()) << "it took no step";
        ASSERT_LT(nth, 500);
    }
};

INSTANTIATE_TEST_SUITE_P(Operations, EveryFault, testing::ValuesIn(MakeUserOperations()),
                         [](const auto& operation) { return std::string(operation.param.mName); });

}  // namespace

TEST_P(EveryFault, AtEachStepBeforeAndAfterItIsToldAndLosesNothing) {
    const ExpectLogged anything("");
    for (const auto& [hasRenameFlags, hasLinks] : {std::pair(true, true), {false, true}, {false, false}}) {
        RunWithEachFault({hasRenameFlags, hasLinks, Lies::None}, false);
        for (const Lies lies : {Lies::None, Lies::Names, Lies::NamesForLong, Lies::NamesForLongUnknown,
                                Lies::Listings, Lies::Refusals})
            RunWithEachFault({hasRenameFlags, hasLinks, lies}, true);
    }
}
