#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <QProcess>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

/// The program `volume-worker`, which starts processes of the host. UI thread.
class WorkerServer {
public:
    WorkerServer() {
        mProcess.setProcessChannelMode(QProcess::SeparateChannels);
        mProcess.setStandardErrorFile(QProcess::nullDevice());
        mProcess.start(QStringLiteral(ZU_BINARY_DIR "/bin/volume-worker"), QStringList());
    }
    ~WorkerServer() {
        mProcess.closeWriteChannel();
        mProcess.waitForFinished(20'000);
    }

    /// Starts a process and waits until it is at work; 0 `milliseconds`: until it is killed.
    pid_t Begin(const std::string& job, const std::string& folder, unsigned seed, int milliseconds = 0) {
        const std::string order =
            job + '\t' + folder + '\t' + std::to_string(seed) + ' ' + std::to_string(milliseconds) + '\n';
        mProcess.write(order.data(), static_cast<qint64>(order.size()));
        std::string what;
        pid_t process = 0;
        while (what != "began") what = ReadLine(process);
        return process;
    }
    /// Ends a process at once; true when it was still at work.
    bool Kill(pid_t process) {
        const bool wasThere = ::kill(process, SIGKILL) == 0;
        while (::kill(process, 0) == 0) ::usleep(50);
        return wasThere;
    }
    /// Waits for a process that comes to its end: 0 when all went as it should.
    int ResultOf(pid_t process) {
        while (!mResults.contains(process)) {
            pid_t said = 0;
            ReadLine(said);
        }
        return mResults.at(process);
    }

private:
    std::string ReadLine(pid_t& process) {
        while (!mProcess.canReadLine())
            if (!mProcess.waitForReadyRead(60'000)) throw std::runtime_error("volume-worker says nothing");
        std::istringstream line(mProcess.readLine().toStdString());
        std::string what;
        line >> what >> process;
        if (what == "ended") line >> mResults[process];
        return what;
    }

    QProcess mProcess;
    std::map<pid_t, int> mResults;
};
