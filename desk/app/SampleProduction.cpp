#include "desk/app/SampleProduction.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include "desk/core/durable/VolumeMove.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/settings/Profile.h"
#include "host/files/FileException.h"
#include "host/project/ProjectFiles.h"

namespace desk {
namespace {

namespace fs = std::filesystem;
using host::FileException;

constexpr char kName[] = "North Shore";
/// Fri 20 Nov 2026 18:42:10 UTC, the last working day of the sample.
constexpr std::int64_t kLastDay = 1795200130;

struct SampleProject {
    const char* mPath;
    std::int64_t mBytes;
    /// Minutes before the last day.
    std::int64_t mAge;
    /// Who has it open for writing; null for nobody.
    const char* mUser = nullptr;
};

constexpr SampleProject kProjects[] = {
    {"01 Rushes/Scene 009 selects", 4'180'000, 0, "edit-bay-2"},
    {"01 Rushes/Scene 010 selects", 3'920'000, 98},
    {"01 Rushes/Scene 011 selects", 2'750'000, 1'410},
    {"01 Rushes/Day 01/Scene 001", 812'000, 21'600},
    {"01 Rushes/Day 01/Scene 002", 934'000, 21'540},
    {"01 Rushes/Day 01/Scene 003", 1'020'000, 21'480},
    {"01 Rushes/Day 02/Scene 004", 688'000, 20'160},
    {"01 Rushes/Day 02/Scene 005", 1'310'000, 20'100},
    {"01 Rushes/Day 02/Scene 006", 1'140'000, 20'040, "edit-bay-4"},
    {"01 Rushes/Day 03/Scene 007", 905'000, 18'720},
    {"01 Rushes/Day 03/Scene 008", 764'000, 18'660},
    {"01 Rushes/Day 03/Scene 009", 1'480'000, 18'600},
    {"01 Rushes/Day 03/Scene 010", 1'260'000, 18'540},
    {"01 Rushes/Day 03/Pick-ups/Scene 002 insert", 212'000, 17'280},
    {"01 Rushes/Day 03/Pick-ups/Scene 006 insert", 187'000, 17'220},
    {"02 Edit/Reel 1 v8", 11'400'000, 4'320},
    {"02 Edit/Reel 1 v9", 11'600'000, 511},
    {"02 Edit/Reel 1 v10", 11'700'000, 41, "edit-bay-4"},
    {"02 Edit/Reel 2 v2", 8'870'000, 5'760},
    {"02 Edit/Reel 2 v3", 9'050'000, 1'225},
    {"02 Edit/Reel 3 v1", 7'610'000, 2'880},
    {"02 Edit/Old versions/Reel 1 v1", 6'240'000, 17'000},
    {"02 Edit/Old versions/Reel 1 v2", 6'900'000, 15'500},
    {"02 Edit/Old versions/Reel 2 v1", 7'330'000, 12'900},
    {"02 Edit/Trailer/Teaser 30 s", 1'900'000, 1'700},
    {"02 Edit/Trailer/Trailer 90 s", 3'440'000, 260, "edit-bay-2"},
    {"03 Sound/Ambience", 2'310'000, 3'300},
    {"03 Sound/Dialogue edit reel 1", 5'120'000, 700, "edit-bay-4"},
    {"03 Sound/Dialogue edit reel 2", 4'670'000, 2'140},
    {"03 Sound/Foley/Boats", 640'000, 6'100},
    {"03 Sound/Foley/Footsteps", 590'000, 6'020},
    {"03 Sound/Music/Cue 1 Opening", 1'050'000, 8'000},
    {"03 Sound/Music/Cue 2 The window", 980'000, 7'900},
    {"03 Sound/Music/Cue 10 Credits", 1'170'000, 7'800},
    {"04 Graphics/Lower thirds", 402'000, 2'500},
    {"04 Graphics/Main titles", 866'000, 1'950},
    {"04 Graphics/Maps/Harbour", 1'730'000, 9'100},
    {"04 Graphics/Maps/North shore", 1'690'000, 9'000},
    {"Delivery checklist", 212'000, 3'082},
};

constexpr const char* kDiscarded[] = {"Reel 1 v7", "Scene 003 old selects"};
constexpr char kEmptyFolder[] = "06 Delivery";
constexpr char kLongFolder[] = "05 Stock footage";
constexpr int kLongFolderProjects = 500;

std::string ProjectPath(const std::string& folder, std::string_view name) {
    return folder + '/' + std::string(name) + host::UTF16to8(host::GetProjectFileExtension());
}

void Check(bool succeeded, std::string_view operation, const std::string& path) {
    if (!succeeded) throw FileException(operation, host::UTF8to16(path), errno);
}

/// Writes a file that begins with `text` and is padded to `bytes` without taking that much of the disk.
void WriteFile(const std::string& path, std::string_view text, std::int64_t bytes, std::int64_t modified) {
    const int file = open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
    Check(file >= 0, "create file", path);
    const timespec times[] = {{0, UTIME_OMIT}, {modified, 0}};
    const bool isWritten =
        write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
        ftruncate(file, std::max<std::int64_t>(bytes, static_cast<std::int64_t>(text.size()))) == 0 &&
        futimens(file, times) == 0;
    const int error = errno;
    const bool isClosed = close(file) == 0;
    if (!isWritten) errno = error;
    Check(isWritten && isClosed, "write file", path);
}

void MakeFolders(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (error) throw FileException("create folder", host::UTF8to16(path), error.value());
}

struct OtherUser {
    const char* mMachineID;
    const char* mBootID;
    std::int64_t mPid;
};

/// The other users' machines are named like them.
OtherUser FindUser(std::string_view user) {
    if (user == "edit-bay-2")
        return {"3f1c9a5e7d2b4860a1e5c3f7092b6d82", "7c1a52de-0f3b-4f0e-9a66-3d2f8f1b6e10", 2210};
    return {"8b0d6e24f95a4c17b3d2e8065f7ac914", "e2b94c07-51d8-4a3e-8f25-60c7d19ab3f4", 3187};
}

/// A lock as another machine would have left it beside its project.
void WriteForeignLock(const std::string& projectPath, const char* user, std::int64_t takenAt) {
    const OtherUser other = FindUser(user);
    LockRecord record;
    record.mIsReadable = true;
    record.mNonce = std::string(other.mMachineID).substr(0, 22) + std::to_string(takenAt);
    record.mUser = record.mMachine = host::UTF8to16(user);
    record.mMachineID = other.mMachineID;
    record.mBootID = other.mBootID;
    record.mPidNamespace = 4026531836;
    record.mPid = other.mPid;
    record.mProcessStart = 48211;
    record.mTakenAt = takenAt;
    const auto slash = projectPath.rfind('/');
    const std::string name = host::UTF16to8(GetLockFileName(host::UTF8to16(projectPath.substr(slash + 1))));
    WriteFile(projectPath.substr(0, slash + 1) + name, WriteLockRecord(record), 0, takenAt);
}

/// A list of shots; as long as the project where that is a text that an editor shows, else its beginning.
std::string MakeText(const SampleProject& project) {
    constexpr std::int64_t kLongestText = 1'000'000;
    constexpr int kFramesPerSecond = 24;
    std::string text = std::string(project.mPath) + "\n00:00:00:00  Opening over black\n";
    if (project.mBytes > kLongestText) return text;
    char line[64];
    for (int shot = 1, frame = 90;; ++shot, frame += 40 + shot * 37 % 110) {
        const int seconds = frame / kFramesPerSecond;
        std::snprintf(line, sizeof line, "%02d:%02d:%02d:%02d  Shot %d, take %d\n", seconds / 3600 % 24,
                      seconds / 60 % 60, seconds % 60, frame % kFramesPerSecond, shot, 1 + shot * 5 % 7);
        if (static_cast<std::int64_t>(text.size() + sizeof line) > project.mBytes) break;
        text += line;
    }
    text.resize(static_cast<std::size_t>(project.mBytes - 1), '-');
    return text + '\n';
}

void WriteProject(const std::string& folder, const SampleProject& project) {
    const std::string path = ProjectPath(folder, project.mPath);
    const std::int64_t modified = kLastDay - project.mAge * 60;
    MakeFolders(path.substr(0, path.rfind('/')));
    WriteFile(path, MakeText(project), project.mBytes, modified);
    if (project.mUser) WriteForeignLock(path, project.mUser, modified - 3'600);
}

void FillLongFolder(const std::string& folder) {
    MakeFolders(folder);
    for (int i = 1; i <= kLongFolderProjects; ++i) {
        const std::string name = "Clip " + std::to_string(i);
        const std::int64_t spread = i * 7919 % 10'007;
        WriteFile(ProjectPath(folder, name), name + '\n', 40'000 + spread * 55,
                  kLastDay - 86'400 - spread * 97);
    }
}

void Fill(const std::string& folder, const std::string& trashName) {
    for (const SampleProject& project : kProjects) WriteProject(folder, project);
    FillLongFolder(folder + '/' + kLongFolder);
    MakeFolders(folder + '/' + kEmptyFolder);
    MakeFolders(folder + '/' + trashName);
    for (const char* name : kDiscarded)
        WriteFile(ProjectPath(folder + '/' + trashName, name), std::string(name) + '\n', 530'000,
                  kLastDay - 604'800);
}

std::string UnfinishedName(pid_t process) {
    return std::string(".") + kName + '.' + std::to_string(process) + ".unfinished";
}

/// Removes what processes that are gone have left unfinished.
void SweepUnfinished(const std::string& folder) {
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        const std::string prefix = std::string(".") + kName + '.';
        pid_t process = 0;
        if (!name.starts_with(prefix)) continue;
        std::from_chars(name.data() + prefix.size(), name.data() + name.size(), process);
        if (process <= 0 || name != UnfinishedName(process)) continue;
        std::error_code ignored;
        if (process != getpid() && fs::exists("/proc/" + std::to_string(process), ignored)) continue;
        fs::remove_all(it->path(), ignored);
    }
}

}  // namespace

std::string EnsureSampleProduction(const std::string& folder, const std::string& trashName) {
    const std::string path = folder + '/' + kName;
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(path, ignored))) return path;
    MakePrivateFolder(folder);
    SweepUnfinished(folder);
    const std::string unfinished = folder + '/' + UnfinishedName(getpid());
    try {
        Fill(unfinished, trashName);
        MoveOnVolume(unfinished, path);
    } catch (const MoveInDoubt&) {
        throw;  // It may be what stands at `path` by now.
    } catch (const FileException&) {
        fs::remove_all(unfinished, ignored);
        if (!fs::exists(fs::symlink_status(path, ignored))) throw;  // Else another process was first.
    }
    return path;
}

}  // namespace desk
