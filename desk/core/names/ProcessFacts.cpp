#include "desk/core/names/ProcessFacts.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "desk/core/durable/FileDescriptor.h"

namespace desk {

namespace {

// Positions in /proc/<pid>/stat counted from the field behind the name (field 3, the state).
constexpr std::size_t kStateAt = 0;
constexpr std::size_t kThreadsAt = 17;
constexpr std::size_t kStartAt = 19;

std::vector<std::string_view> Split(std::string_view text) {
    std::vector<std::string_view> fields;
    while (!text.empty()) {
        std::size_t end = std::min(text.find_first_of(" \n"), text.size());
        if (end > 0) fields.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return fields;
}

std::optional<std::uint64_t> ToNumber(std::string_view digits) {
    std::uint64_t value = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size()) return {};
    return value;
}

bool IsPid(std::int64_t pid) {
    return pid > 0 && pid <= std::numeric_limits<pid_t>::max();
}

}  // namespace

std::optional<ProcessFacts> ParseProcessStat(std::string_view stat) {
    // The process's name stands in parentheses and may hold any character.
    std::size_t nameEnd = stat.rfind(')');
    if (nameEnd == std::string_view::npos) return {};
    std::vector<std::string_view> fields = Split(stat.substr(nameEnd + 1));
    if (fields.size() <= kStartAt) return {};
    std::optional<std::uint64_t> start = ToNumber(fields[kStartAt]);
    if (!start) return {};
    // The first thread of a process may end before the others: a zombie with threads is alive.
    const bool isZombie = fields[kStateAt] == "Z" || fields[kStateAt] == "X";
    return ProcessFacts{isZombie && ToNumber(fields[kThreadsAt]).value_or(0) <= 1, *start};
}

std::optional<ProcessFacts> ReadProcessFacts(std::int64_t pid) {
    if (!IsPid(pid)) return {};
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string stat(std::istreambuf_iterator<char>(file), {});
    return ParseProcessStat(stat);
}

bool IsPidFree(std::int64_t pid) {
    if (!IsPid(pid)) return false;
    FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(pid), 0)));
    if (process.IsOpen()) return false;
    // EINVAL: the number is a thread's, so no process has it.
    if (errno == ESRCH || errno == EINVAL) return true;
    // Where the call is forbidden, /proc tells, if it shows other users' processes (hidepid).
    return ReadProcessFacts(1).has_value() && !ReadProcessFacts(pid).has_value();
}

OwnProcess GetOwnProcess() {
    // Each thread's own, so that nothing has to be locked after a fork, which begins another process.
    thread_local OwnProcess sOwn;
    const pid_t pid = ::getpid();
    if (sOwn.mPid == pid) return sOwn;
    struct stat facts;
    const std::uint64_t pidNamespace = ::stat("/proc/self/ns/pid", &facts) == 0 ? facts.st_ino : 0;
    const auto process = ReadProcessFacts(pid);
    if (!process) return {0, 0, pidNamespace};
    return sOwn = {pid, process->mStart, pidNamespace};
}

}  // namespace desk
