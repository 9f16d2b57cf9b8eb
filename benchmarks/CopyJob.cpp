#include <unistd.h>

#include <QProcess>
#include <QTemporaryDir>
#include <filesystem>
#include <fstream>

#include "benchmarks/VolumeJobs.h"
#include "host/core/Strings.h"
#include "host/files/FileUtils.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 2000;
constexpr std::size_t kFileSize = (std::size_t{1} << 30) / kFiles;
constexpr int kRuns = 3;

class CopyJob final : public VolumeJob {
public:
    CopyJob(const std::string& parent, Figure figure, bool isFlushed)
        : VolumeJob(std::move(figure), kRuns),
          mIsFlushed(isFlushed),
          mTemporary(QString::fromStdString(parent + "/production-desk-XXXXXX")) {}

    double RunOurs() override {
        return Run([this] {
            host::FileUtils::Copy(host::Dir(host::UTF8to16(mSource)), host::Dir(host::UTF8to16(mDestination)));
        });
    }
    double RunBaseline() override {
        return Run([this] {
            Require(
                QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), QString::fromStdString(mSource),
                                                         QString::fromStdString(mDestination)}) == 0);
            if (mIsFlushed) ::sync();
        });
    }

private:
    template <class Work>
    double Run(Work work) {
        if (!fs::exists(mSource)) MakeSource();
        ::sync();
        const double time = TimeOf(work);
        const auto copies = fs::recursive_directory_iterator(mDestination);
        Require(std::count_if(begin(copies), end(copies), [](const fs::directory_entry& entry) {
                    return entry.is_regular_file() && entry.file_size() == kFileSize;
                }) == kFiles);
        fs::remove_all(mDestination);
        ::sync();
        return time;
    }
    void MakeSource() const {
        std::string bytes(kFileSize, '\0');
        for (int i = 0; i < kFiles; ++i) {
            const std::string folder = mSource + "/Reel " + std::to_string(i / 100);
            fs::create_directories(folder);
            for (std::size_t at = 0; at < bytes.size(); at += 512) bytes[at] = static_cast<char>(i + at / 512);
            std::ofstream(folder + "/Scene " + std::to_string(i) + ".zuproj", std::ios::binary) << bytes;
        }
    }

    const bool mIsFlushed;
    const QTemporaryDir mTemporary;
    const std::string mSource = mTemporary.path().toStdString() + "/source";
    const std::string mDestination = mTemporary.path().toStdString() + "/destination";
};

}  // namespace

VolumeJobPtr MakeCopyJob(const std::string& parent, bool isFlushed) {
    const std::string name = "a folder of 2,000 files and 1 GB copied, beside cp -a";
    return std::make_unique<CopyJob>(
        parent, isFlushed ? Figure{name + " and sync", "ms", 1, {}} : Figure{name, "ms", 1, {}}, isFlushed);
}

}  // namespace bench
