#include <fcntl.h>
#include <unistd.h>

#include <QJsonDocument>
#include <QTemporaryDir>
#include <fstream>
#include <iterator>
#include <memory>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "benchmarks/VolumeJobs.h"
#include "desk/core/settings/Directories.h"
#include "host/core/DirectoryRegistry.h"

namespace bench {

namespace {

using namespace HandlerSharedProjects;
using PanelState = SharedProjectsTabView::StateData;

constexpr int kProductions = 1000;
constexpr int kOpenFolders = 20;
constexpr int kSelectedRows = 5;
constexpr int kRuns = 15;

UTF16String Number(int value) {
    return NumberToString(static_cast<long long>(value));
}

UTF16String ProductionPath(int index) {
    return u"/Volumes/Productions/Season " + Number(index / 50) + u"/Episode " + Number(index);
}

PanelState MakeState(const UTF16String& production) {
    PanelState state;
    for (int i = 0; i < kOpenFolders; ++i)
        state.mDirectoryViewData.mOpenFolderPaths.push_back(production + u"/Reels/Shooting day " + Number(i));
    for (int i = 0; i < kSelectedRows; ++i)
        state.mDirectoryViewData.mSelectedRowPaths.push_back(production + u"/Reels/Shooting day 3/Reel " +
                                                             Number(i) + u".zuproj");
    for (const ColumnID column :
         {Columns::kNameColumnID, Columns::kLockedColumnID, Columns::kModifiedDateColumnID,
          Columns::kCreationDateColumnID, Columns::kSizeColumnID})
        state.mDirectoryViewData.mHeaderRowData.mColumnDataList.push_back({column, 213.25f});
    state.mDirectoryViewData.mTopVisibleRowPath = production + u"/Reels";
    state.mDockedInMainWindow = true;
    return state;
}

/// A profile with the settings of 1,000 productions.
class SettingsJob : public VolumeJob {
public:
    SettingsJob(const std::string& parent, Figure figure)
        : VolumeJob(std::move(figure), kRuns),
          mProfile(QString::fromStdString(parent + "/production-desk-XXXXXX")),
          mFile(mProfile.path().toStdString() + "/Production Panel Settings") {
        JSONMemberTexts layouts;
        for (int i = 0; i < kProductions; ++i)
            layouts[UTF16to8(ProductionPath(i))] = GetJSONString(ToJSON(MakeState(ProductionPath(i))));
        Write(FormatLayouts(layouts));
    }

protected:
    std::string Read() const {
        std::ifstream file(mFile, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Write(const std::string& bytes) const { std::ofstream(mFile, std::ios::binary) << bytes; }
    /// The panel's handler, which reads the file when it first needs it.
    std::unique_ptr<SharedProjectsHandler> MakeHandler() const {
        desk::RegisterDirectory(DirectoryRegistry::kUserProfile, UTF8to16(mProfile.path().toStdString()));
        return std::make_unique<SharedProjectsHandler>(UTF16String());
    }

    const QTemporaryDir mProfile;
    const std::string mFile;
};

class ReadJob final : public SettingsJob {
public:
    using SettingsJob::SettingsJob;

    double RunOurs() override {
        const auto handler = MakeHandler();
        PanelState state;
        bool isFound = false;
        const double time = TimeOf(
            [&] { isFound = handler->LoadStateDataForProduction(ProductionPath(kProductions - 1), state); });
        Require(isFound && state == MakeState(ProductionPath(kProductions - 1)));
        return time;
    }
    /// Qt's own tree of the same file.
    double RunBaseline() override {
        return TimeOf([&] {
            const std::string bytes = Read();
            const QStringView text(reinterpret_cast<const QChar*>(bytes.data()),
                                   static_cast<qsizetype>(bytes.size() / sizeof(QChar)));
            Require(QJsonDocument::fromJson(text.toUtf8()).isObject());
        });
    }
};

class WriteJob final : public SettingsJob {
public:
    WriteJob(const std::string& parent, Figure figure, bool hasOtherProgram)
        : SettingsJob(parent, std::move(figure)), mHasOtherProgram(hasOtherProgram) {}

    double RunOurs() override {
        const auto handler = MakeHandler();
        PanelState state;
        Require(handler->LoadStateDataForProduction(ProductionPath(0), state));
        state.mDirectoryViewData.mSelectedRowPaths.push_back(ProductionPath(0) + u"/Reel " +
                                                             Number(++mChanges) + u".zuproj");
        if (mHasOtherProgram) Write(Read() + std::string(" \0", 2));
        const double time = TimeOf([&] { handler->SaveStateDataForProduction(ProductionPath(0), state); });
        Require(MakeHandler()->LoadStateDataForProduction(ProductionPath(0), state) &&
                state.mDirectoryViewData.mSelectedRowPaths.size() > kSelectedRows);
        return time;
    }
    /// The same bytes in a new file that is flushed and renamed, and nothing else.
    double RunBaseline() override {
        const std::string bytes = Read();
        return TimeOf([&] {
            const std::string temporary = mFile + ".new";
            const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
            Require(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
            Require(::fsync(file) == 0 && ::close(file) == 0);
            Require(::rename(temporary.c_str(), mFile.c_str()) == 0);
            const int folder =
                ::open(mProfile.path().toStdString().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            Require(::fsync(folder) == 0 && ::close(folder) == 0);
        });
    }

private:
    const bool mHasOtherProgram;
    int mChanges = 0;
};

}  // namespace

VolumeJobPtr MakeSettingsReadJob(const std::string& parent) {
    return std::make_unique<ReadJob>(parent, Figure{"settings of 1,000 productions read", "ms", {}, 50});
}

VolumeJobPtr MakeSettingsWriteJob(const std::string& parent, bool hasOtherProgram) {
    const std::string name = "one entry written into settings of 1,000 productions";
    return hasOtherProgram
               ? std::make_unique<WriteJob>(
                     parent, Figure{name + ", which another program has changed", "ms", {}, {}}, true)
               : std::make_unique<WriteJob>(parent, Figure{name, "ms", {}, 20}, false);
}

}  // namespace bench
