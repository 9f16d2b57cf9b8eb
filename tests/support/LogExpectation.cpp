#include "tests/support/LogExpectation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "desk/core/log/Log.h"

/// Sorts the log's lines into expected ones and failures.
class LogWatch {
public:
    static LogWatch& Instance() {
        static auto& watch = *new LogWatch;
        return watch;
    }
    void Add(ExpectLogged* expectation) {
        const std::lock_guard lock(mMutex);
        mExpectations.push_back(expectation);
    }
    void Remove(ExpectLogged* expectation) {
        const std::lock_guard lock(mMutex);
        std::erase(mExpectations, expectation);
    }
    int Count(const ExpectLogged& expectation) {
        const std::lock_guard lock(mMutex);
        return expectation.mCount;
    }
    std::vector<std::string> TakeUnexpected() {
        const std::lock_guard lock(mMutex);
        return std::exchange(mUnexpected, {});
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

private:
    std::mutex mMutex;
    std::vector<ExpectLogged*> mExpectations;
    std::vector<std::string> mUnexpected;
};

namespace {

class LogListener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override {
        LogWatch::Instance().TakeUnexpected();
        desk::SetLogSink(
            [](desk::LogLevel level, const std::string& line) { LogWatch::Instance().Take(level, line); });
    }
    void OnTestEnd(const testing::TestInfo&) override {
        desk::SetLogSink({});
        for (const std::string& line : LogWatch::Instance().TakeUnexpected())
            ADD_FAILURE() << "Nobody expected this in the log: " << line;
    }
};

}  // namespace

ExpectLogged::ExpectLogged(std::string part) : mPart(std::move(part)) {
    LogWatch::Instance().Add(this);
}

ExpectLogged::~ExpectLogged() {
    LogWatch::Instance().Remove(this);
    EXPECT_GT(mCount, 0) << "This was not logged: " << mPart;
}

int ExpectLogged::Count() const {
    return LogWatch::Instance().Count(*this);
}

void WatchLogOfTests() {
    testing::UnitTest::GetInstance()->listeners().Append(new LogListener);
}
