#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <string>

namespace slowvolume {

/// A folder mounted by the program `slow-volume`, as long as the object lives.
class VolumeMount {
public:
    /// `program` is the path of `slow-volume`; `options` are those of its command line.
    VolumeMount(const QString& program, const std::string& source, const QStringList& options) {
        mProcess.start(program, QStringList{QString::fromStdString(source), mMountPoint.path()} + options);
        mProcess.waitForReadyRead(10'000);
        mIsMounted = mProcess.readAllStandardOutput() == "mounted\n";
        if (!mIsMounted) mProcess.waitForFinished(1000);
    }
    ~VolumeMount() { Unmount(); }

    /// False when it could not be mounted (no right to, no /dev/fuse); `ErrorText` says why.
    bool IsMounted() const { return mIsMounted; }
    std::string ErrorText() { return mProcess.readAllStandardError().trimmed().toStdString(); }
    std::string Path() const { return mMountPoint.path().toStdString(); }
    std::string Path(const std::string& name) const { return Path() + '/' + name; }

    void Unmount() {
        if (mProcess.state() == QProcess::NotRunning) return;
        mProcess.terminate();
        mProcess.waitForFinished(60'000);
    }

private:
    QTemporaryDir mMountPoint;
    QProcess mProcess;
    bool mIsMounted = false;
};

}  // namespace slowvolume
