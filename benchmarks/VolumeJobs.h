#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "benchmarks/ResultTable.h"

class HostProcess;

namespace bench {

/// Something that the program does with a volume, and the same done by bare means.
class VolumeJob {
public:
    explicit VolumeJob(Figure figure, int runs) : mFigure(std::move(figure)), mRuns(runs) {}
    virtual ~VolumeJob() = default;

    /// Both return what the figure counts, and throw when a step failed. They leave the disk as it was.
    virtual double RunOurs() = 0;
    /// Negative when there is none.
    virtual double RunBaseline() = 0;

    const Figure& GetFigure() const { return mFigure; }
    int GetRuns() const { return mRuns; }

private:
    const Figure mFigure;
    const int mRuns;
};

using VolumeJobPtr = std::unique_ptr<VolumeJob>;

/// Taking and giving up a lock, in the folder `parent`.
VolumeJobPtr MakeLockJob(const std::string& parent, const std::string& where, std::optional<double> limit);
/// 1,000 projects to the trash of the open production of `host`, which is in `production`.
VolumeJobPtr MakeTrashJob(HostProcess& host, const std::string& production);
/// 100 projects to the trash of a production on a slow volume, which is opened in `host` for that.
VolumeJobPtr MakeSlowTrashJob(HostProcess& host);
/// A folder of 2,000 files and 1 GB copied, beside `cp -a`; with `isFlushed` the latter's copy is made durable
/// as ours always is.
VolumeJobPtr MakeCopyJob(const std::string& parent, bool isFlushed);
/// What the heap keeps of 1,000 projects that were listed, opened and closed.
VolumeJobPtr MakeLeakJob(HostProcess& host, const std::string& production);

/// The panel's settings file of 1,000 productions read, in a profile in the folder `parent`, beside Qt's own
/// tree of it.
VolumeJobPtr MakeSettingsReadJob(const std::string& parent);
/// One production's entry written into it, beside the bare write; with `hasOtherProgram`, which has written
/// meanwhile.
VolumeJobPtr MakeSettingsWriteJob(const std::string& parent, bool hasOtherProgram);

/// Throws when a step has failed.
void Require(bool isGood);

/// Milliseconds that `work` takes.
template <class Work>
double TimeOf(Work work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace bench
