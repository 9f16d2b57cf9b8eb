#include <gtest/gtest.h>

#include "desk/core/DebugDatabaseFile.h"
#include "host/core/Trace.h"
#include "tests/support/LogExpectation.h"

namespace {

TEST(TraceTest, FollowsTheDebugDatabase) {
    const int before = host::TraceChangeCount();
    EXPECT_TRUE(host::TraceEnabled("SharedProjects", 8, true));
    EXPECT_FALSE(host::TraceEnabled("SharedProjects", 8, false));
    desk::SetDebugDatabaseEntries({{"RowHeight", 25}, {"Trace.SharedProjects", 8}, {"Trace.Off", -1}});
    EXPECT_EQ(host::TraceChangeCount(), before + 1);
    EXPECT_TRUE(host::TraceEnabled("SharedProjects", 8, false));
    EXPECT_FALSE(host::TraceEnabled("SharedProjects", 9, true));
    EXPECT_FALSE(host::TraceEnabled("Off", 0, true));
    EXPECT_TRUE(host::TraceEnabled("Other", 9, true));
    desk::SetDebugDatabaseEntries({{"RowHeight", 26}, {"Trace.SharedProjects", 8}, {"Trace.Off", -1}});
    EXPECT_EQ(host::TraceChangeCount(), before + 1) << "no setting of traces has changed";
    desk::SetDebugDatabaseEntries({});
    EXPECT_EQ(host::TraceChangeCount(), before + 2);
}

TEST(TraceTest, IsOneLineOfTheLog) {
    const ExpectLogged line("trace SharedProjects 8: moved\\nReel 1");
    const ExpectLogged withBreak("Reel 1\\n");
    host::Trace(8, "SharedProjects", u"moved\nReel 1\n");
    EXPECT_EQ(line.Count(), 1);
    host::Trace(8, "SharedProjects", u"Reel 1\n\n");
}

}  // namespace
