#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <string>

namespace bench {

/// A folder mounted by the program `slow-volume`, as long as the object lives.
class SlowVolumeMount {
public:
    /// Throws std::runtime_error when it cannot be mounted (no right to, no /dev/fuse).
    SlowVolumeMount(const std::string& source, int delayInMilliseconds);
    ~SlowVolumeMount();

    std::string Path() const { return mMountPoint.path().toStdString(); }

private:
    QTemporaryDir mMountPoint;
    QProcess mProcess;
};

}  // namespace bench
