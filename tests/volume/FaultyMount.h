#pragma once

#include <unistd.h>

#include <QProcess>
#include <sstream>
#include <string>

#include "tests/support/TemporaryFolder.h"

/// A folder as another machine sees it: mounted by a FUSE program that fails by a rule (`slow-volume --fail`).
class FaultyMount {
public:
    FaultyMount(const std::string& source, const std::string& rule) {
        mProcess.setProgram(QStringLiteral(ZU_BINARY_DIR "/bin/slow-volume"));
        mProcess.setArguments({QString::fromStdString(source), QString::fromStdString(mMountPoint.Path()),
                               QStringLiteral("--delay-ms"), QStringLiteral("0"),
                               QStringLiteral("--cache-seconds"), QStringLiteral("0"), QStringLiteral("--fail"),
                               QString::fromStdString(rule), QStringLiteral("--statistics")});
        mProcess.start();
        mProcess.waitForReadyRead(10'000);
        mIsMounted = mProcess.readAllStandardOutput() == "mounted\n";
    }
    ~FaultyMount() { Unmount(); }

    static bool IsPossible() { return ::access("/dev/fuse", R_OK | W_OK) == 0; }
    bool IsMounted() const { return mIsMounted; }
    const std::string& Path() const { return mMountPoint.Path(); }
    std::string Path(const std::string& name) const { return mMountPoint.Path(name); }
    std::string ErrorText() { return mProcess.readAllStandardError().toStdString(); }

    /// How many calls the rule has let fail. Unmounts.
    int CountFailures() {
        Unmount();
        std::istringstream lines(ErrorText());
        int count = 0;
        for (std::string word; lines >> word;)
            if (word == "failures") lines >> count;
        return count;
    }

private:
    void Unmount() {
        if (mProcess.state() == QProcess::NotRunning) return;
        mProcess.terminate();
        mProcess.waitForFinished(20'000);
    }

    TemporaryFolder mMountPoint;
    QProcess mProcess;
    bool mIsMounted = false;
};
