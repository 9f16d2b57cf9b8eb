#include "tests/ui/ProgramRun.h"

namespace {

class OpenProject : public ProgramRun {
protected:
    OpenProject() { mHome.Write("Harbour/Reel 1.zuproj", "one\ntwo\n"); }

    const std::string mProfile = mHome.Path("profile"), mProduction = mHome.Path("Harbour");
    const std::string mProject = mHome.Path("Harbour/Reel 1.zuproj");
    static constexpr char kLock[] = "Harbour/.Reel 1.zuproj.lock";
};

TEST_F(OpenProject, HoldsItsLockUntilTheSessionEnds) {
    std::string lock;
    const auto isLocked = [&] {
        if (mHome.Exists(kLock)) lock = mHome.Read(kLock);
        return !lock.empty();
    };
    const Result result =
        RunWindowUntil(isLocked, {"--profile", mProfile, "--user", "ines", "--open", mProject, mProduction});
    EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
    EXPECT_NE(lock.find("\"user\":\"ines\""), std::string::npos) << lock;
    EXPECT_FALSE(mHome.Exists(kLock)) << "given up";
    EXPECT_EQ(mHome.Read("Harbour/Reel 1.zuproj"), "one\ntwo\n");
}

TEST_F(OpenProject, TellsThatAProjectIsNotThereAndGoesOn) {
    const auto isTold = [&] {
        return mHome.Exists("profile/log.txt") &&
               mHome.Read("profile/log.txt").find("“none” was not opened") != std::string::npos;
    };
    const Result result = RunWindowUntil(
        isTold, {"--profile", mProfile, "--open", mHome.Path("Harbour/none.zuproj"), mProduction});
    EXPECT_EQ(result.mExitCode, 0) << "the session's end closes the message too: " << result.mErrors;
}

}  // namespace
