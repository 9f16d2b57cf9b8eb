#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "desk/core/names/LockRecord.h"
#include "desk/core/names/ProcessFacts.h"
#include "tests/support/RecordingDesktop.h"

using desk::LockRecord;

namespace {

LockRecord GoodRecord() {
    LockRecord record;
    record.mIsReadable = true;
    record.mNonce = "00112233445566778899aabbccddeeff";
    record.mUser = u"Jos\u00E9 \u202E\n";
    record.mMachine = u"edit-bay-2";
    record.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
    record.mBootID = "7c1a52de-0f3b-4f0e-9a66-3d2f8f1b6e10";
    record.mPidNamespace = 4026531836;
    record.mPid = 2210;
    record.mProcessStart = 9'007'199'254'740'993;  // no double has it
    record.mTakenAt = 1772443800;
    return record;
}

/// The good record's bytes with `from` replaced by `to`.
std::string Changed(const std::string& from, const std::string& to) {
    std::string bytes = WriteLockRecord(GoodRecord());
    const std::size_t at = bytes.find(from);
    if (at == std::string::npos) throw std::logic_error("not in the record: " + from);
    return bytes.replace(at, from.size(), to);
}

}  // namespace

TEST(LockRecord, ComesBackAsItWasWritten) {
    const std::string bytes = WriteLockRecord(GoodRecord());
    EXPECT_EQ(WriteLockRecord(desk::ParseLockRecord(bytes)), bytes);
    for (const char* part : {"\"takenAt\":\"2026-03-02T09:30:00Z\"", "9007199254740993", "Jos\u00E9 \u202E\\n",
                             "2210", "edit-bay-2", "3f1c9a5e", "7c1a52de", "4026531836", "00112233"})
        EXPECT_NE(bytes.find(part), std::string::npos) << part << " in " << bytes;
    EXPECT_TRUE(desk::ParseLockRecord(Changed("{", "{ \"later\": [1, {\"x\": null}],\n")).mIsReadable);
    EXPECT_EQ(desk::ParseLockRecord(Changed("\"pid\":2210", "\"pid\":1,\"pid\":2211")).mPid, 2211);
}

TEST(LockRecord, WhatIsNoRecordIsUnreadable) {
    const std::string good = WriteLockRecord(GoodRecord());
    for (std::size_t size = 0; size + 2 < good.size(); ++size)
        EXPECT_FALSE(desk::ParseLockRecord(good.substr(0, size)).mIsReadable) << size;
    for (const std::string& bytes : {good + '\0', good + good, std::string("\x7F\x45LF\x02\x01\xFF\xFE"),
                                     std::string(2000, '['), "[" + good + "]", good + std::string(4096, ' ')})
        EXPECT_FALSE(desk::ParseLockRecord(bytes).mIsReadable) << bytes;
    const std::pair<const char*, std::string> changes[] = {
        {"version\":1", "version\":2"},
        {"version\":1", "version\":1.5"},
        {"2210", "-1"},
        {"2210", "4294967297"},
        {"2210", "1e300"},
        {"4026531836", "-1"},
        {"9007199254740993", "99999999999999999999"},
        {"00112233", "0011223"},
        {"00112233", "0011223G"},
        {"edit-bay-2", ""},
        {"edit-bay-2", "a\\u0000b"},
        {"edit-bay-2", std::string(256, 'm')},
        {"09:30:00Z", "09:30:00"},
        {"2026-03-02", "2026-02-31"},
    };
    for (const auto& [from, to] : changes)
        EXPECT_FALSE(desk::ParseLockRecord(Changed(from, to)).mIsReadable) << from << " to " << to;
}

TEST(LockRecord, LockFilesAreNamedAfterTheirProjects) {
    EXPECT_EQ(desk::GetLockFileName(u"Reel 1.zuproj"), u".Reel 1.zuproj.lock");
    EXPECT_EQ(desk::GetProjectNameOfLockFile(u".Reel 1.zuproj.lock"), u"Reel 1.zuproj");
    for (const char16_t* name : {u"", u".lock", u"..lock", u"Reel 1.zuproj.lock", u".Reel 1.zuproj",
                                 u".Reel 1.lock", u"..zuproj.lock", u".zuproj.lock"})
        EXPECT_EQ(desk::GetProjectNameOfLockFile(name), u"") << host::UTF16to8(name);
}

namespace {

/// A record of this very process, and what may have become of it.
class StaleLock : public testing::Test {
protected:
    StaleLock() {
        mRecord = GoodRecord();
        mRecord.mMachine = mDesktop.mMachineName;
        mRecord.mMachineID = mDesktop.mMachineID;
        mRecord.mBootID = mDesktop.mBootID;
        mRecord.mPidNamespace = desk::GetOwnProcess().mPidNamespace;
        mRecord.mPid = getpid();
        mRecord.mProcessStart = desk::ReadProcessFacts(getpid()).value().mStart;
    }
    bool IsStale() const { return desk::IsLockStale(mRecord, mDesktop); }

    RecordingDesktop mDesktop;
    LockRecord mRecord;
};

}  // namespace

TEST_F(StaleLock, OfALivingProcessIsHeldAndOfAnEndedOrReplacedOneIsNot) {
    EXPECT_FALSE(IsStale());
    ++mRecord.mProcessStart;
    EXPECT_TRUE(IsStale());
    const pid_t child = fork();
    if (child == 0) _exit(0);
    siginfo_t ended;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    mRecord.mPid = child;
    mRecord.mProcessStart = desk::ReadProcessFacts(child).value().mStart;
    EXPECT_TRUE(IsStale()) << "ended, its result not collected";
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(IsStale()) << "gone";
}

TEST_F(StaleLock, OfElsewhereOrUnreadableIsHeld) {
    mRecord.mBootID = "another";
    ASSERT_TRUE(IsStale());
    const LockRecord stale = mRecord;
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"another container",
         [&] { ++mRecord.mPidNamespace, ++mRecord.mProcessStart, mRecord.mBootID = mDesktop.mBootID; }},
        {"another machine", [&] { mRecord.mMachineID = "another"; }},
        {"a clone of this machine", [&] { mRecord.mMachine = u"edit-bay-2"; }},
        {"unreadable", [&] { mRecord.mIsReadable = false; }},
        {"the process is not known", [&] { mRecord.mPid = 0, mRecord.mBootID = mDesktop.mBootID; }},
        {"our own boot is not known", [&] { mDesktop.mBootID.clear(); }},
        {"two machines without an id are not one",
         [&] { mRecord.mMachineID.clear(), mDesktop.mMachineID.clear(); }},
    };
    for (const auto& [name, change] : cases) {
        mRecord = stale;
        change();
        EXPECT_FALSE(IsStale()) << name;
    }
    for (std::int64_t pid : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1} << 40})
        EXPECT_FALSE(desk::IsPidFree(pid) || desk::ReadProcessFacts(pid)) << pid;
}

TEST(ProcessFacts, ANameMayHoldAnything) {
    const std::string numbers = " 1 2 3 0 -1 4194304 100 0 0 0 0 0 0 0 20 0 ";
    const auto facts = desk::ParseProcessStat("77 (a) Z 1 (b) R" + numbers + "1 0 264519 3133440\n");
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->mStart, 264519u);
    EXPECT_FALSE(facts->mHasEnded);
    EXPECT_TRUE(desk::ParseProcessStat("77 (a) Z" + numbers + "1 0 5 0\n")->mHasEnded);
    EXPECT_FALSE(desk::ParseProcessStat("77 (a) Z" + numbers + "4 0 5 0\n")->mHasEnded)
        << "its other threads run";
    EXPECT_FALSE(desk::ParseProcessStat(""));
    EXPECT_FALSE(desk::ParseProcessStat("77 (a) R 1 2"));
}
