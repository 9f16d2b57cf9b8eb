/// Processes for the tests of this folder. Reads orders from standard input, a line each: job, folder, seed and
/// milliseconds, separated by tabs. Each begins a process of its own, which says "began PID" as soon as it is
/// at work and "ended PID RESULT" at its end, if it comes to it; 0 milliseconds last until it is killed. A fork
/// costs less than a start: the libraries are loaded once.
#include <signal.h>
#include <unistd.h>

#include <iostream>
#include <sstream>

#include "tests/volume/worker/HostProcess.h"
#include "tests/volume/worker/Jobs.h"

namespace {

struct Order {
    std::string mJob;
    std::string mFolder;
    unsigned mSeed = 0;
    int mMilliseconds = 0;
};

bool Read(Order& order) {
    std::string line;
    if (!std::getline(std::cin, line)) return false;
    std::istringstream text(line);
    std::getline(text, order.mJob, '\t');
    std::getline(text, order.mFolder, '\t');
    text >> order.mSeed >> order.mMilliseconds;
    return true;
}

void Say(const std::string& what, const std::string& more = {}) {
    const std::string line = what + ' ' + std::to_string(::getpid()) + more + '\n';
    if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) ::_exit(1);
}

int Work(const Order& order) {
    HostProcess host(order.mFolder);
    Say("began");
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(order.mMilliseconds);
    const auto goesOn = [&] { return order.mMilliseconds == 0 || std::chrono::steady_clock::now() < end; };
    return DoForLong(order.mJob, host, order.mFolder, order.mSeed, goesOn) ? 0 : 2;
}

int WorkSafely(const Order& order) {
    try {
        return Work(order);
    } catch (const std::exception& exception) {
        std::cerr << order.mJob << ": " << exception.what() << std::endl;
        return 1;
    }
}

}  // namespace

int main() {
    ::signal(SIGCHLD, SIG_IGN);  // Those that end leave nothing to be collected.
    for (Order order; Read(order);) {
        const pid_t process = ::fork();
        if (process > 0) continue;
        if (process < 0) return 1;
        ::signal(SIGCHLD, SIG_DFL);
        Say("ended", ' ' + std::to_string(WorkSafely(order)));
        ::_exit(0);
    }
    return 0;
}
