#include <gtest/gtest.h>

#include <stdexcept>

#include "host/core/Messaging.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"

namespace {

using namespace host;

const StationID kStation{"test.station"};
const StationID kOther{"test.other"};

struct NameMessage : MessageTemplate<NameMessage> {
    explicit NameMessage(std::string name) : mName(std::move(name)) {}
    std::string mName;
};
struct OtherMessage : MessageTemplate<OtherMessage> {};

struct Recorder : Listener {
    explicit Recorder(std::string* heard, std::string name = {}) : mHeard(heard), mName(std::move(name)) {
        AddListener(kStation, this);
    }
    ~Recorder() override {
        RemoveListener(kStation, this);
        RemoveListener(kOther, this);
    }
    void ListenToMessage(const Message& message) override {
        const auto* name = MessageCast<NameMessage>(message);
        *mHeard += mName + (name ? name->mName : "?") + " ";
        if (mThen) mThen();
    }
    std::string* mHeard;
    std::string mName;
    std::function<void()> mThen;
};

}  // namespace

TEST(MessagingTest, ListenersMayComeAndGoDuringAnAnnouncement) {
    std::string heard;
    Recorder first(&heard, "1");
    auto second = std::make_unique<Recorder>(&heard, "2");
    Recorder third(&heard, "3");
    std::unique_ptr<Recorder> late;
    first.mThen = [&] {
        second.reset();
        RemoveListener(kStation, &first);
        if (!late) late = std::make_unique<Recorder>(&heard, "late");
    };
    AddListener(kStation, &third);
    BroadcastMessage(kStation, NameMessage("a"));
    EXPECT_EQ(heard, "1a 3a ");
    heard.clear();
    BroadcastMessage(kStation, NameMessage("b"));
    EXPECT_EQ(heard, "3b lateb ");
}

TEST(MessagingTest, RemovalInANestedAnnouncementHoldsForTheOuterOneAndExceptionsStayWithTheirListener) {
    const ExpectLogged log("station test.station");
    std::string heard;
    Recorder first(&heard, "1");
    auto second = std::make_unique<Recorder>(&heard, "2");
    bool isNested = false;
    first.mThen = [&] {
        if (!std::exchange(isNested, true))
            BroadcastMessage(kStation, NameMessage("inner"));
        else
            second.reset();
        throw std::runtime_error("no");
    };
    Recorder third(&heard, "3");
    BroadcastMessage(kStation, NameMessage("outer"));
    EXPECT_EQ(heard, "1outer 1inner 3inner 3outer ");
}

TEST(MessagingTest, PostingOnceReplacesWhatWaitsForThatStation) {
    std::string heard;
    Recorder recorder(&heard);
    AddListener(kOther, &recorder);
    const auto post = [](const StationID& station, const char* name, bool once) {
        PostMessageToUIThread(station, std::make_shared<NameMessage>(name), once);
    };
    {
        ManualMainThread main;
        post(kStation, "a", true);
        post(kStation, "each", false);
        post(kOther, "other", true);
        PostMessageToUIThread(kStation, std::make_shared<OtherMessage>(), true);
        post(kStation, "b", true);
        post(kStation, "each", false);
        EXPECT_EQ(heard, "");
        main.RunUntilIdle();
        EXPECT_EQ(heard, "b each other ? each ");

        post(kStation, "dropped with its main thread", true);
    }
    heard.clear();
    ManualMainThread main;
    recorder.mThen = [&] {
        recorder.mThen = nullptr;
        post(kStation, "d", true);
    };
    post(kStation, "c", true);
    main.RunUntilIdle();
    EXPECT_EQ(heard, "c d ");
}
