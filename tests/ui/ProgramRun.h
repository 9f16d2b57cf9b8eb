#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <chrono>
#include <functional>
#include <initializer_list>
#include <thread>

#include "tests/support/TemporaryFolder.h"

/// The real program as a process of its own, without a display, with a home and a profile of its own.
class ProgramRun : public testing::Test {
protected:
    struct Result {
        int mExitCode = -1;
        std::string mOutput, mErrors;
    };
    using Arguments = std::initializer_list<std::string>;

    ProgramRun() : mEnvironment(QProcessEnvironment::systemEnvironment()) {
        for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY", "ZUHOST_PLUGIN_PATH",
                                 "LANGUAGE", "LC_ALL", "QT_SCALE_FACTOR"})
            mEnvironment.remove(QString::fromLatin1(name));
        SetVariable("HOME", mHome.MakeFolder("home"));
        SetVariable("XDG_CONFIG_HOME", mHome.Path("config"));
        SetVariable("XDG_DATA_HOME", mHome.Path("data"));
        SetVariable("XDG_RUNTIME_DIR", mHome.MakeFolder("runtime"));
        SetVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + mHome.Path("no-bus"));
        SetVariable("LANG", "C.UTF-8");
    }

    void SetVariable(const char* name, const std::string& value) {
        mEnvironment.insert(QString::fromLatin1(name), QString::fromStdString(value));
    }

    void Start(QProcess& process, const std::vector<std::string>& arguments) const {
        QStringList list;
        for (const std::string& argument : arguments) list.append(QString::fromStdString(argument));
        process.setProcessEnvironment(mEnvironment);
        process.setWorkingDirectory(QString::fromStdString(mHome.Path()));
        process.start(QStringLiteral(ZU_BINARY_DIR "/bin/production-desk"), list);
        ASSERT_TRUE(process.waitForStarted()) << process.errorString().toStdString();
    }

    static Result Finish(QProcess& process) {
        if (!process.waitForFinished(100'000)) {
            process.kill();
            process.waitForFinished();
            ADD_FAILURE() << "The program did not end";
        }
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << "it crashed";
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    Result Run(Arguments arguments) const {
        QProcess process;
        Start(process, arguments);
        return Finish(process);
    }

    /// Takes a picture and reads it back; a failure of the program fails the test.
    QImage Picture(Arguments arguments) const {
        const Result result = Run(arguments);
        EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
        return QImage(QString::fromStdString(mHome.Path("picture.png")));
    }

    /// Opens the real window (on no screen), waits until `isReady`, and ends the program as a session's end
    /// does.
    Result RunWindowUntil(const std::function<bool()>& isReady, Arguments arguments) {
        SetVariable("QT_QPA_PLATFORM", "offscreen");
        QProcess process;
        Start(process, arguments);
        EXPECT_TRUE(WaitFor(isReady)) << process.readAllStandardError().toStdString();
        process.terminate();
        return Finish(process);
    }

    static bool WaitFor(const std::function<bool()>& isDone) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(40);
        while (!isDone()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return true;
    }

    TemporaryFolder mHome;
    QProcessEnvironment mEnvironment;
};

inline int CountLines(const std::string& text) {
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}
