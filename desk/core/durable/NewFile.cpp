#include "desk/core/durable/NewFile.h"

#include <cerrno>
#include <fstream>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/Presence.h"
#include "desk/core/durable/VolumeMove.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"

namespace desk {

namespace {

/// How often the removal of a temporary is tried.
constexpr int kTries = 3;

FileSystem& Disk() {
    return *GetServices().mFileSystem;
}

template <class Publish>
void MakeFile(FileSystem& fileSystem, const std::string& path, const std::string& bytes, unsigned mode,
              Publish publish) {
    const std::string temporary = JoinPath<std::string>(FolderOf(path), MakeTemporaryName());
    try {
        fileSystem.CreateNewFile(temporary, bytes, mode);
        publish(temporary);
    } catch (const MoveInDoubt& doubt) {
        RemoveTemporaryFile(fileSystem, temporary, doubt.SystemError());
        throw;
    } catch (const host::FileException& exception) {
        RemoveTemporaryFile(fileSystem, temporary, exception.SystemError());
        ThrowFileException("create", path, exception.SystemError());
    }
}

/// Of a name that nobody else can have chosen, it is enough to know whether something has it.
void GiveOwnName(FileSystem& fileSystem, const std::string& temporary, const std::string& path) {
    try {
        fileSystem.Rename(temporary, path);
    } catch (const host::FileException& exception) {
        if (IsRefusal(exception.SystemError())) throw;
        const Presence presence = FindPresence(fileSystem, path);
        if (presence == Presence::NotTold) throw MoveInDoubt(exception, temporary, path);
        if (presence == Presence::Gone) throw;
        Log(LogLevel::Info, std::string("done nevertheless: ") + exception.what());
    }
}

}  // namespace

void MakeNewFile(const std::string& path, const std::string& bytes, unsigned mode) {
    ThrowIfTaken(Disk(), "create", path);
    MakeFile(Disk(), path, bytes, mode, [&](const std::string& temporary) {
        ThrowUnlessDurable(MoveOnVolume(temporary, path), temporary, path);
    });
}

void MakeNewFolder(const std::string& path) {
    ThrowIfTaken(Disk(), "create folder", path);
    try {
        Disk().CreateFolder(path);
    } catch (const host::FileException& exception) {
        const int error = exception.SystemError();
        if (error == EEXIST || IsRefusal(error)) throw;
        const Presence presence = FindPresence(Disk(), path);
        if (presence == Presence::NotTold) throw MoveInDoubt(exception, path, path);
        if (presence == Presence::Gone) throw;
        Log(LogLevel::Info, std::string("done nevertheless: ") + exception.what());
    }
}

void MakeFileOfOwnName(FileSystem& fileSystem, const std::string& path, const std::string& bytes,
                       unsigned mode) {
    MakeFile(fileSystem, path, bytes, mode,
             [&](const std::string& temporary) { GiveOwnName(fileSystem, temporary, path); });
}

bool RemoveTemporaryFile(FileSystem& fileSystem, const std::string& path, int reason) {
    bool isAbsenceBelieved = reason == 0 || IsRefusal(reason);
    // A volume that has just failed may fail again.
    for (int tries = 1;; ++tries) {
        try {
            fileSystem.RemoveFile(path);
            return true;
        } catch (const host::FileException& exception) {
            const bool isAbsent = exception.SystemError() == ENOENT;
            if (isAbsent && isAbsenceBelieved) return true;
            if (tries == kTries) {
                Log(LogLevel::Warning,
                    std::string("a temporary file could not be removed: ") + exception.what());
                return false;
            }
            if (isAbsent) isAbsenceBelieved = fileSystem.WaitForCaches(FolderOf(path));
        }
    }
}

unsigned GetModeOfNewFiles() {
    // proc(5); umask(2) could only be asked by changing it for all threads.
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (unsigned mask = 0; word == "Umask:" && status >> std::oct >> mask) return 0666 & ~mask;
    return 0644;
}

}  // namespace desk
