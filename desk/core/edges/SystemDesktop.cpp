#include "desk/core/edges/SystemDesktop.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <utility>

#include "desk/core/edges/FileBrowser.h"

namespace desk {

namespace {

/// The login name of the process's user; for a user that the system does not know, "uid-<number>".
std::string ReadLoginName() {
    std::array<char, 16384> buffer;
    passwd entry;
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && *found->pw_name)
        return found->pw_name;
    return "uid-" + std::to_string(::getuid());
}

std::string ReadMachineName() {
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : std::string();
}

/// The first line of a small file of the system; empty when it cannot be read.
std::string ReadFirstLine(const char* path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

/// machine-id(5): 32 hexadecimal digits, or a word such as "uninitialized" while there is none.
/// Without an ID of its own (in many containers) a machine has one for the time until it is started again: what
/// its processes left before that counts as another machine's, and is left alone.
std::string MakeMachineIDOfBoot(std::string bootID) {
    std::erase(bootID, '-');
    return bootID;
}

std::string ReadMachineID(const std::string& bootID) {
    for (const char* path : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
        std::string id = ReadFirstLine(path);
        if (id.size() == 32 && id.find_first_not_of("0123456789abcdef") == std::string::npos) return id;
    }
    return MakeMachineIDOfBoot(bootID);
}

}  // namespace

SystemDesktop::SystemDesktop(const host::UTF16String& userName)
    : mUserName(userName.empty() ? host::UTF8to16(ReadLoginName()) : userName),
      mMachineName(host::UTF8to16(ReadMachineName())),
      mBootID(ReadFirstLine("/proc/sys/kernel/random/boot_id")),
      mMachineID(ReadMachineID(mBootID)) {}

void SystemDesktop::ShowInFileBrowser(const std::vector<std::string>& paths, Reveal reveal,
                                      RevealFailed failed) {
    desk::ShowInFileBrowser(paths, reveal, std::move(failed));
}

}  // namespace desk
