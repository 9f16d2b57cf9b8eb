#include "host/core/Messaging.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "host/core/Logging.h"

namespace host {
namespace {

struct Station {
    /// In the order of adding. Null where a listener was removed during an announcement.
    std::vector<Listener*> mListeners;
    int mAnnouncements = 0;
};

/// Never destroyed: listeners may be removed while the process exits. References to stations stay valid.
std::unordered_map<StationID, Station>& Stations() {
    static auto& stations = *new std::unordered_map<StationID, Station>;
    return stations;
}

/// A message that was posted only once. Owned by its task, so that a task that is dropped leaves nothing
/// behind.
struct Slot {
    std::shared_ptr<const Message> mMessage;
};

struct WaitingMessages {
    std::mutex mMutex;
    std::map<std::pair<StationID, MessageTypeID>, std::weak_ptr<Slot>> mSlots;
};

WaitingMessages& Waiting() {
    static auto& waiting = *new WaitingMessages;
    return waiting;
}

std::shared_ptr<const Message> TakeMessage(const std::shared_ptr<Slot>& slot) {
    const std::lock_guard lock(Waiting().mMutex);
    return std::exchange(slot->mMessage, nullptr);
}

void PostOnlyOnce(const StationID& station, std::shared_ptr<const Message> message) {
    const auto slot = std::make_shared<Slot>();
    {
        const std::lock_guard lock(Waiting().mMutex);
        std::weak_ptr<Slot>& waiting = Waiting().mSlots[{station, message->GetMessageTypeID()}];
        if (const auto before = waiting.lock(); before && before->mMessage) {
            before->mMessage = std::move(message);
            return;
        }
        slot->mMessage = std::move(message);
        waiting = slot;
    }
    desk::GetServices().mMainThread->Post([station, slot] { BroadcastMessage(station, *TakeMessage(slot)); });
}

}  // namespace

MessageTypeID HashMessageTypeNameToMessageID(const char* typeName) {
    MessageTypeID hash = 0xCBF29CE484222325u;
    for (const char c : std::string_view(typeName))
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    return hash;
}

Message::~Message() = default;
Listener::~Listener() = default;

void AddListener(const StationID& station, Listener* listener) {
    std::vector<Listener*>& listeners = Stations()[station].mListeners;
    if (std::ranges::find(listeners, listener) == listeners.end()) listeners.push_back(listener);
}

void RemoveListener(const StationID& station, Listener* listener) {
    const auto found = Stations().find(station);
    if (found == Stations().end()) return;
    if (found->second.mAnnouncements > 0)
        std::ranges::replace(found->second.mListeners, listener, nullptr);
    else
        std::erase(found->second.mListeners, listener);
}

void BroadcastMessage(const StationID& station, const Message& message) {
    const auto found = Stations().find(station);
    if (found == Stations().end()) return;
    Station& target = found->second;
    ++target.mAnnouncements;
    // Listeners that are added meanwhile stand behind `count` and wait for the next message.
    const std::size_t count = target.mListeners.size();
    for (std::size_t i = 0; i < count; ++i) {
        Listener* const listener = target.mListeners[i];
        if (!listener) continue;
        try {
            listener->ListenToMessage(message);
        } catch (...) {
            LogCurrentException("station " + station.Get());
        }
    }
    if (--target.mAnnouncements == 0) std::erase(target.mListeners, nullptr);
}

void PostMessageToUIThread(const StationID& station, std::shared_ptr<const Message> message, bool onlyOnce) {
    if (onlyOnce) return PostOnlyOnce(station, std::move(message));
    desk::GetServices().mMainThread->Post(
        [station, message = std::move(message)] { BroadcastMessage(station, *message); });
}

}  // namespace host
