#include <gtest/gtest.h>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/Presence.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/files/disk/PosixFileSystem.h"

using desk::Presence;

namespace {

constexpr Presence kThere = Presence::There;
constexpr Presence kGone = Presence::Gone;
constexpr Presence kNotTold = Presence::NotTold;

/// What the looks by name and by listing answer, before and after the second wait.
struct Answers {
    Presence mNames[2];
    Presence mListings[2];
    Presence mExpected;
    bool mIsForgotten = true;
};

/// A volume that answers so about "/volume/item".
class AnsweringVolume : public desk::PosixFileSystem {
public:
    explicit AnsweringVolume(const Answers& answers) : mAnswers(answers) {}

    desk::ItemStatus Status(const std::string& path, bool) override {
        Answer(path, mAnswers.mNames[mWaits - 1], ENOENT);
        return {};
    }
    std::vector<desk::FolderEntry> ListFolder(const std::string& path) override {
        Answer(path, mAnswers.mListings[mWaits - 1], 0);
        if (mAnswers.mListings[mWaits - 1] == kGone) return {{"other", desk::ItemKind::File}};
        return {{"other", desk::ItemKind::File}, {"item", desk::ItemKind::File}};
    }
    bool WaitForCaches(const std::string&) noexcept override {
        ++mWaits;
        return mAnswers.mIsForgotten;
    }

    int mWaits = 0;

private:
    static void Answer(const std::string& path, Presence presence, int errorWhenGone) {
        if (presence == kNotTold) desk::ThrowFileException("look at", path, EIO);
        if (presence == kGone && errorWhenGone != 0) desk::ThrowFileException("look at", path, errorWhenGone);
    }

    const Answers mAnswers;
};

}  // namespace

TEST(PresenceTest, GoesByListingsAfterTheCachesAndTellsWhenItIsNotTold) {
    const Answers cases[] = {
        {{kThere, kThere}, {kThere, kThere}, kThere},
        {{kGone, kGone}, {kGone, kGone}, kGone},
        // A name that is known wrongly for longer than it should.
        {{kThere, kThere}, {kGone, kGone}, kGone},
        {{kGone, kThere}, {kThere, kThere}, kThere},
        // It comes or goes meanwhile.
        {{kThere, kGone}, {kGone, kThere}, kNotTold},
        {{kGone, kThere}, {kThere, kGone}, kNotTold},
        // The folder cannot be listed.
        {{kThere, kThere}, {kNotTold, kNotTold}, kNotTold},
        {{kGone, kGone}, {kNotTold, kGone}, kNotTold},
        {{kNotTold, kNotTold}, {kGone, kGone}, kGone},
        // Names are kept for longer than is waited.
        {{kThere, kThere}, {kThere, kThere}, kNotTold, false},
        {{kGone, kGone}, {kGone, kGone}, kNotTold, false},
    };
    for (const Answers& answers : cases) {
        SCOPED_TRACE(&answers - cases);
        AnsweringVolume volume(answers);
        EXPECT_EQ(FindPresence(volume, "/volume/item"), answers.mExpected);
        const bool isClear = answers.mNames[0] == answers.mListings[0];
        EXPECT_EQ(volume.mWaits, isClear || !answers.mIsForgotten ? 1 : 2);
    }
}
