#include <cerrno>

#include "desk/files/FileFailure.h"
#include "desk/project/BreakLock.h"
#include "tests/support/HostFixture.h"

namespace {

class WordingTest : public HostFixture {};

TEST_F(WordingTest, ALockFilesTextsCannotPretendToBeTheProgramsOwn) {
    desk::LockRecord record = desk::MakeLockRecord(mDesktop, u"eve\n\nNobody works on it.", u"vm\u202E07");
    record.mIsReadable = true;
    const std::string text = host::UTF16to8(desk::DescribeHolder(record));
    EXPECT_TRUE(text.starts_with("eve\\n\\nNobody works on it. on vm\\u202E07, since ")) << text;
}

TEST_F(WordingTest, AReasonNamesNoFileThatTheUserDoesNotKnow) {
    const auto describe = [](const char16_t* path) {
        return host::UTF16to8(desk::DescribeReason(host::FileException("create copy", path, EROFS)));
    };
    EXPECT_EQ(describe(u"/v/P/A.zuproj"), "Read-only file system (/v/P/A.zuproj)");
    EXPECT_EQ(describe(u"/v/P/.zutmp-0123456789abcdef0123456789abcdef.m.b.1.2.3"),
              "Read-only file system (/v/P)");
}

}  // namespace
