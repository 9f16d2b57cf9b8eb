#pragma once

#include <cstdint>
#include <memory>
#include <typeinfo>

#include "host/core/Export.h"
#include "host/core/ImmutableString.h"

namespace host {

/// Names a station: a place where messages are announced and listened for.
using StationID = ImmutableString;

using MessageTypeID = std::uint64_t;

/// Hashes a message class's type name (64-bit FNV-1a). Equal names give equal IDs in every library
/// of the process. Any thread.
ZUHOST_API MessageTypeID HashMessageTypeNameToMessageID(const char* typeName);

/// Base of all messages. A message tells what happened; it is never changed by a listener.
class ZUHOST_API Message {
public:
    virtual ~Message();
    /// The ID of the message's most derived class, from `HashMessageTypeNameToMessageID`.
    virtual MessageTypeID GetMessageTypeID() const = 0;
};

/// Gives the message class `Derived` its type ID, computed once and kept.
template <class Derived>
class MessageTemplate : public Message {
public:
    static MessageTypeID GetTypeID() {
        static const MessageTypeID sTypeID = HashMessageTypeNameToMessageID(typeid(Derived).name());
        return sTypeID;
    }
    MessageTypeID GetMessageTypeID() const override { return GetTypeID(); }
};

/// Returns `message` as `T`, or null when it is another kind of message.
template <class T>
const T* MessageCast(const Message& message) {
    return message.GetMessageTypeID() == T::GetTypeID() ? static_cast<const T*>(&message) : nullptr;
}

/// Receives the messages of the stations it was added to, on the UI thread.
class ZUHOST_API Listener {
public:
    virtual ~Listener();
    virtual void ListenToMessage(const Message& message) = 0;
};

/// Adds `listener` (not owned) to a station. Adding it again to the same station changes nothing.
/// The caller removes it before it dies. UI thread.
ZUHOST_API void AddListener(const StationID& station, Listener* listener);

/// Removes `listener` from a station; harmless when it was not added. A listener that is removed
/// while a message is being announced does not receive that message any more. UI thread.
ZUHOST_API void RemoveListener(const StationID& station, Listener* listener);

/// Announces `message` at once to every listener of the station, in the order in which they were
/// added. An exception from one listener is logged and does not keep the message from the others.
/// UI thread.
ZUHOST_API void BroadcastMessage(const StationID& station, const Message& message);

/// Announces `message` later, on the UI thread, after what is already queued. With `onlyOnce`, a
/// message of the same type that was posted so and is still waiting for that station is replaced, at
/// its place in the queue. Any thread.
ZUHOST_API void PostMessageToUIThread(const StationID& station, std::shared_ptr<const Message> message,
                                      bool onlyOnce);

}  // namespace host
