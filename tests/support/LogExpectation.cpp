#include "tests/support/LogExpectation.h"

#include <gtest/gtest.h>

#include <mutex>
#include <utility>
#include <vector>

#include "desk/core/log/Log.h"

/// Sorts the log's lines into expected ones and failures.
class LogWatch : public testing::EmptyTestEventListener {
public:
    static LogWatch& Instance() {
        static auto& watch = *new LogWatch;
        return watch;
    }

    std::mutex mMutex;
    std::vector<ExpectLogged*> mExpectations;

private:
    void OnTestStart(const testing::TestInfo&) override {
        mUnexpected.clear();
        desk::SetLogSink([this](desk::LogLevel level, const std::string& line) { Take(level, line); });
    }
    void OnTestEnd(const testing::TestInfo&) override {
        desk::SetLogSink({});
        for (const std::string& line : std::exchange(mUnexpected, {}))
            ADD_FAILURE() << "Nobody expected this in the log: " << line;
    }
    void Take(desk::LogLevel level, const std::string& line) {
        const std::lock_guard lock(mMutex);
        bool isExpected = level == desk::LogLevel::Info;
        for (ExpectLogged* expectation : mExpectations)
            if (line.find(expectation->mPart) != std::string::npos) {
                ++expectation->mCount;
                isExpected = true;
            }
        if (!isExpected) mUnexpected.push_back(line);
    }

    std::vector<std::string> mUnexpected;
};

ExpectLogged::ExpectLogged(std::string part) : mPart(std::move(part)) {
    const std::lock_guard lock(LogWatch::Instance().mMutex);
    LogWatch::Instance().mExpectations.push_back(this);
}

ExpectLogged::~ExpectLogged() {
    const std::lock_guard lock(LogWatch::Instance().mMutex);
    std::erase(LogWatch::Instance().mExpectations, this);
    EXPECT_GT(mCount, 0) << "This was not logged: " << mPart;
}

int ExpectLogged::Count() const {
    const std::lock_guard lock(LogWatch::Instance().mMutex);
    return mCount;
}

void WatchLogOfTests() {
    testing::UnitTest::GetInstance()->listeners().Append(&LogWatch::Instance());
}
