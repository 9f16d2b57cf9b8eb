#include "benchmarks/SlowVolumeMount.h"

#include <QCoreApplication>
#include <stdexcept>

namespace bench {

SlowVolumeMount::SlowVolumeMount(const std::string& source, int delayInMilliseconds) {
    mProcess.setProgram(QCoreApplication::applicationDirPath() + QStringLiteral("/slow-volume"));
    mProcess.setArguments({QString::fromStdString(source), mMountPoint.path(), QStringLiteral("--delay-ms"),
                           QString::number(delayInMilliseconds)});
    mProcess.start();
    mProcess.waitForReadyRead(10'000);
    if (mProcess.readAllStandardOutput() != "mounted\n") {
        mProcess.waitForFinished(1000);
        throw std::runtime_error("could not mount the slow volume: " +
                                 mProcess.readAllStandardError().trimmed().toStdString());
    }
}

SlowVolumeMount::~SlowVolumeMount() {
    mProcess.terminate();
    mProcess.waitForFinished(60'000);
}

}  // namespace bench
