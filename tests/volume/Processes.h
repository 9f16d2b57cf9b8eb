#pragma once

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <new>

/// Memory that a program shares with the processes that it starts afterwards.
template <class Data>
class Shared {
public:
    Shared()
        : mData(new (::mmap(nullptr, sizeof(Data), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
                    Data) {}
    ~Shared() { ::munmap(mData, sizeof(Data)); }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;
    Data* operator->() { return mData; }
    Data& operator*() { return *mData; }

private:
    Data* mData;
};

/// Starts a process that ends with what `work` returns. Threads of this process are not there in it.
inline pid_t StartProcess(const std::function<int()>& work) {
    const pid_t process = ::fork();
    if (process == 0) ::_exit(work());
    return process;
}

/// Waits for a process; -1 when a signal ended it.
inline int ResultOf(pid_t process) {
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
