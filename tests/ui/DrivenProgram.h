#pragma once

#include <signal.h>

#include "tests/ui/ProgramRun.h"

/// The real program with its window (on no screen), in which the test types and presses buttons
/// (tests/ui/driver).
class DrivenProgram {
public:
    explicit DrivenProgram(QProcess& process) : mProcess(process) {}

    /// One line, without its end.
    std::string Ask(const std::string& request) {
        mProcess.write((request + '\n').c_str());
        while (!mProcess.canReadLine())
            if (!mProcess.waitForReadyRead(20'000))
                return "no answer: " + mProcess.readAllStandardError().toStdString();
        return mProcess.readLine().trimmed().toStdString();
    }
    void Do(const std::string& request) { EXPECT_EQ(Ask(request), "ok") << request << "\n" << Ask("texts"); }
    /// What can be read on the screen.
    bool Shows(const std::string& part) { return Ask("texts").find(part) != std::string::npos; }
    bool WaitToShow(const std::string& part) {
        for (int i = 0; i < 400; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(50)))
            if (Shows(part)) return true;
        ADD_FAILURE() << part << " is not among " << Ask("texts");
        return false;
    }
    /// Nothing of the program runs after this.
    void Kill() {
        mProcess.kill();
        EXPECT_TRUE(mProcess.state() == QProcess::NotRunning || mProcess.waitForFinished());
    }

private:
    QProcess& mProcess;
};
