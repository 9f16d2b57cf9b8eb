#pragma once

#include <string>

/// Expects a line with `part` in the log (at any level) before it goes out of scope; fails the test when none
/// came. Warnings and errors with `part` are then no failures. Any other warning or error fails the test.
class ExpectLogged {
public:
    explicit ExpectLogged(std::string part);
    ~ExpectLogged();
    ExpectLogged(const ExpectLogged&) = delete;
    ExpectLogged& operator=(const ExpectLogged&) = delete;

    /// How many lines with `part` have come so far.
    int Count() const;

private:
    friend class LogWatch;
    std::string mPart;
    int mCount = 0;
};

/// Makes unexpected warnings and errors in the log fail the running test; called once by the test program.
void WatchLogOfTests();
