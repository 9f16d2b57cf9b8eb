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

}  // namespace
