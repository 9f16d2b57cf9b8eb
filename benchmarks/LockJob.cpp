#include <fcntl.h>
#include <unistd.h>

#include <QTemporaryDir>

#include "benchmarks/VolumeJobs.h"
#include "desk/core/edges/Services.h"
#include "desk/project/lock/LockKeeper.h"

namespace bench {

namespace {

/// So many in a row make one value: a single one is too short to be told from the disk's moods.
constexpr int kLocks = 50;
constexpr int kRuns = 15;

class LockJob final : public VolumeJob {
public:
    LockJob(const std::string& parent, Figure figure)
        : VolumeJob(std::move(figure), kRuns),
          mTemporary(QString::fromStdString(parent + "/production-desk-XXXXXX")) {}

    double RunOurs() override {
        return RunMany([this] {
            const auto taking =
                desk::LockKeeper::Instance().Take(mFolder + "/.Reel 1.zuproj.lock", u"ines", u"edit-bay-1");
            Require(taking.mLock != nullptr);
        });
    }
    /// The system calls that cannot be done without, and nothing else.
    double RunBaseline() override {
        const std::string record =
            WriteLockRecord(desk::MakeLockRecord(*desk::GetServices().mDesktop, u"ines", u"edit-bay-1"));
        return RunMany([&] {
            const std::string temporary = mFolder + "/.temporary";
            const std::string lock = mFolder + "/.Reel 1.zuproj.lock";
            const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
            Require(::write(file, record.data(), record.size()) == static_cast<ssize_t>(record.size()));
            Require(::fsync(file) == 0 && ::close(file) == 0);
            Require(::link(temporary.c_str(), lock.c_str()) == 0);
            Require(::unlink(temporary.c_str()) == 0 && ::unlink(lock.c_str()) == 0);
        });
    }

private:
    /// Microseconds for one.
    template <class Work>
    double RunMany(Work work) {
        return 1000 * TimeOf([&] {
                   for (int i = 0; i < kLocks; ++i) work();
               }) /
               kLocks;
    }

    const QTemporaryDir mTemporary;
    const std::string mFolder = mTemporary.path().toStdString();
};

}  // namespace

VolumeJobPtr MakeLockJob(const std::string& parent, const std::string& where, std::optional<double> limit) {
    return std::make_unique<LockJob>(parent, Figure{"take and give up a lock, " + where, "µs", limit, {}});
}

}  // namespace bench
