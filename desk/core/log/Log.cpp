#include "desk/core/log/Log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <utility>

#include "host/core/Strings.h"

namespace desk {
namespace {

constexpr off_t kFileLimit = off_t{1} << 20;

struct LogState {
    /// Recursive: a sink may log.
    std::recursive_mutex mMutex;
    LogSink mSink;
    int mFile = -1;
};

/// Never destroyed: static objects of other libraries log on their way out.
LogState& State() {
    static auto& state = *new LogState;
    return state;
}

const char* LevelName(LogLevel level) {
    switch (level) {
        case LogLevel::Info:
            return "info";
        case LogLevel::Warning:
            return "warning";
        case LogLevel::Error:
            break;
    }
    return "error";
}

void AppendEscaped(std::string& out, unsigned unit) {
    char escape[8];
    if (unit == '\n')
        out += "\\n";
    else if (unit == '\t')
        out += "\\t";
    else {
        std::snprintf(escape, sizeof escape, unit < 0x100 ? "\\x%02X" : "\\u%04X", unit);
        out += escape;
    }
}

/// Line breaks, controls, bidirectional controls and bytes that are no text would let a file name forge lines.
bool MustEscape(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029 ||
           (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

std::string Escaped(std::string_view text) {
    const host::UTF16String units = host::UTF8to16(text);
    std::string out;
    std::size_t begin = 0;
    const auto flush = [&](std::size_t end) {
        out += host::UTF16to8(std::u16string_view(units).substr(begin, end - begin));
        begin = end + 1;
    };
    for (std::size_t i = 0; i < units.size(); ++i) {
        const bool isPair = i > 0 && units[i - 1] >= 0xD800 && units[i - 1] <= 0xDBFF;
        const bool isRawByte = units[i] >= 0xDC80 && units[i] <= 0xDCFF && !isPair;
        if (!isRawByte && !MustEscape(units[i])) continue;
        flush(i);
        AppendEscaped(out, isRawByte ? units[i] - 0xDC00u : units[i]);
    }
    flush(units.size());
    return out;
}

std::string TimeStamp() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis = static_cast<int>((now.time_since_epoch() / std::chrono::milliseconds(1)) % 1000);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char date[32];
    char stamp[48];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(stamp, sizeof stamp, "%s.%03dZ", date, millis);
    return stamp;
}

/// False with errno when not all of it could be written.
bool WriteLine(int file, const std::string& line) {
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t count = write(file, line.data() + done, line.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

void WriteToStandardError(LogLevel level, const std::string& line) {
    WriteLine(STDERR_FILENO, std::string("production-desk: ") + LevelName(level) + ": " + line + '\n');
}

void WriteToFile(LogState& state, LogLevel level, const std::string& line) {
    if (state.mFile < 0 || WriteLine(state.mFile, TimeStamp() + ' ' + LevelName(level) + ": " + line + '\n'))
        return;
    WriteToStandardError(LogLevel::Warning,
                         std::string("the log file cannot be written: ") + std::strerror(errno));
    close(std::exchange(state.mFile, -1));
}

/// Opens a regular file for appending; -1 with errno when that fails.
int OpenForAppending(const std::string& path) {
    const int file =
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW, 0600);
    struct stat status {};
    if (file < 0 || (fstat(file, &status) == 0 && S_ISREG(status.st_mode))) return file;
    close(file);
    errno = EINVAL;
    return -1;
}

}  // namespace

void Log(LogLevel level, std::string_view text) noexcept {
    try {
        LogState& state = State();
        const std::string line = Escaped(text);
        const std::lock_guard lock(state.mMutex);
        WriteToStandardError(level, line);
        WriteToFile(state, level, line);
        if (state.mSink) state.mSink(level, line);
    } catch (...) {
        // Out of memory: the line is lost.
    }
}

void OpenLogFile(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > kFileLimit)
        std::rename(path.c_str(), (path + ".old").c_str());
    const int file = OpenForAppending(path);
    const int error = errno;
    {
        LogState& state = State();
        const std::lock_guard lock(state.mMutex);
        if (state.mFile >= 0) close(state.mFile);
        state.mFile = file;
    }
    if (file < 0)
        Log(LogLevel::Warning, "The log file \"" + path + "\" cannot be written: " + std::strerror(error));
}

LogSink SetLogSink(LogSink sink) {
    LogState& state = State();
    const std::lock_guard lock(state.mMutex);
    return std::exchange(state.mSink, std::move(sink));
}

}  // namespace desk
