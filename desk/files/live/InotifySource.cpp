#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/log/Log.h"
#include "desk/files/live/ChangeSource.h"

namespace desk {
namespace {

constexpr std::uint32_t kMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE |
                                IN_MODIFY | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR |
                                IN_EXCL_UNLINK;

class InotifySource : public ChangeSource {
public:
    InotifySource();
    ~InotifySource() override;

    void Start(Receiver receiver) override;
    void Stop() override;
    int Add(const std::string& path) override;
    void Remove(int watch) override;

private:
    void Run();
    bool WaitForEvents() const;
    std::vector<Event> ReadEvents();

    int mInotify;
    int mSystemError = 0;
    int mStop;
    Receiver mReceiver;
    std::thread mThread;
    alignas(inotify_event) std::array<char, 64 * 1024> mBuffer;
};

InotifySource::InotifySource()
    : mInotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      mSystemError(mInotify < 0 ? errno : 0),
      mStop(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (mInotify < 0) Log(LogLevel::Info, std::string("watch folders: ") + std::strerror(mSystemError));
}

InotifySource::~InotifySource() {
    Stop();
    if (mInotify >= 0) close(mInotify);
    if (mStop >= 0) close(mStop);
}

void InotifySource::Start(Receiver receiver) {
    mReceiver = std::move(receiver);
    if (mInotify >= 0 && mStop >= 0) mThread = std::thread([this] { Run(); });
}

void InotifySource::Stop() {
    if (!mThread.joinable()) return;
    eventfd_write(mStop, 1);
    mThread.join();
}

int InotifySource::Add(const std::string& path) {
    if (mInotify < 0) return -mSystemError;
    const int watch = inotify_add_watch(mInotify, path.c_str(), kMask);
    return watch < 0 ? -errno : watch;
}

void InotifySource::Remove(int watch) {
    if (mInotify >= 0) inotify_rm_watch(mInotify, watch);
}

void InotifySource::Run() {
    while (WaitForEvents()) {
        const std::vector<Event> events = ReadEvents();
        if (!events.empty()) RunTask([&] { mReceiver(events); }, "folder watch");
    }
}

/// False when the source stops.
bool InotifySource::WaitForEvents() const {
    pollfd descriptors[] = {{mInotify, POLLIN, 0}, {mStop, POLLIN, 0}};
    while (poll(descriptors, 2, -1) < 0)
        if (errno != EINTR) return false;
    return descriptors[1].revents == 0;
}

std::vector<ChangeSource::Event> InotifySource::ReadEvents() {
    std::vector<Event> events;
    const ssize_t count = read(mInotify, mBuffer.data(), mBuffer.size());
    for (const char* at = mBuffer.data(); count > 0 && at < mBuffer.data() + count;) {
        inotify_event event;
        std::memcpy(&event, at, sizeof event);
        events.push_back(
            {event.wd, event.mask, event.len > 0 ? std::string(at + sizeof event) : std::string()});
        at += sizeof event + event.len;
    }
    return events;
}

}  // namespace

std::unique_ptr<ChangeSource> CreateInotifySource() {
    return std::make_unique<InotifySource>();
}

}  // namespace desk
