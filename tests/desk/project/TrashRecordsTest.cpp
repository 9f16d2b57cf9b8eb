#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "desk/core/names/HostNames.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/project/production/BrokenLocksLog.h"
#include "desk/project/production/Production.h"
#include "desk/project/production/TrashRecords.h"
#include "host/files/File.h"
#include "host/project/ProductionTrash.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

namespace fs = std::filesystem;

namespace {

/// The texts of a record on the disk, by the names of its members.
std::string Texts(const std::string& record, const std::vector<const char*>& members) {
    const QJsonObject object = desk::ParseJsonObject(record).mObject;
    QStringList texts;
    for (const char* member : members) texts.push_back(object.value(QLatin1String(member)).toString());
    return texts.join(QLatin1Char(' ')).toStdString();
}

class TrashRecordsTest : public HostFixture {
protected:
    TrashRecordsTest() {
        desk::Production::Instance().Open(mFolder.PathUTF16("Production"));
        mTrash = "Production/" + host::UTF16to8(host::GetZuProductionTrashDirectoryDisplayName());
        mRecords = mTrash + "/.zurecords";
        mFolder.MakeFolder("Production/Day 1");
    }
    ~TrashRecordsTest() override { desk::Production::Instance().Close(); }

    int Move(const std::string& from, const std::string& to) {
        const int result = host::File::Move(mFolder.PathUTF16(from), mFolder.PathUTF16(to));
        mMain.RunUntilIdle();
        return result;
    }
    std::set<std::string> Records() {
        std::set<std::string> records;
        for (const std::string& name : NamesIn(mRecords)) {
            const std::string record = mFolder.Read(mRecords + '/' + name);
            const std::string texts = Texts(record, {"user", "machine", "movedAt"});
            for (const auto& item :
                 desk::ParseJsonObject(record).mObject.value(QLatin1String("items")).toArray())
                records.insert(Texts(QJsonDocument(item.toObject()).toJson().toStdString(), {"name", "from"}) +
                               ' ' + texts);
        }
        return records;
    }
    int WriteRecord() {
        return ErrorOf([this] { WriteTrashRecord(mDisk, mFolder.Path(mTrash), {{{"a", "b"}}, {}, {}, 0}); });
    }

    std::string mTrash;
    std::string mRecords;
};

}  // namespace

TEST_F(TrashRecordsTest, WhatMovesToTheTrashIsRecordedThere) {
    mFolder.MakeFolder(mTrash + "/Old");
    const std::string odd = "Caf\xE9 \u202E\n%.zuproj";
    mFolder.Write("Production/Day 1/" + odd);
    mFolder.Write("Production/x.zuproj");
    EXPECT_EQ(Move("Production/Day 1/" + odd, mTrash + '/' + odd), 0);
    mDesktop.mNow += std::chrono::minutes(1);
    EXPECT_EQ(Move("Production/Day 1", mTrash + "/Old/Day 1_1"), 0);
    EXPECT_EQ(Move(mTrash + "/Old", mTrash + "/Older"), 0) << "is in the trash already";
    EXPECT_EQ(Move("Production/x.zuproj", "Production/y.zuproj"), 0);
    const std::string encoded = "Caf%E9%20%E2%80%AE%0A%25.zuproj";
    EXPECT_EQ(Records(), (Names{encoded + " Day%201/" + encoded + " ines edit-bay-1 2026-03-02T09:30:00Z",
                                "Old/Day%201_1 Day%201 ines edit-bay-1 2026-03-02T09:31:00Z"}));
    EXPECT_TRUE(desk::IsHiddenName(".zurecords", desk::ItemKind::Unknown)) << "copies ask so";
    for (const auto& entry : fs::directory_iterator(mFolder.Path(mRecords)))
        EXPECT_EQ(entry.status().permissions() & fs::perms::all, fs::perms(0644)) << "others read it too";
}

TEST_F(TrashRecordsTest, WhatCannotBeRecordedMovesNevertheless) {
    mFolder.MakeFolder(mTrash);
    const ExpectLogged log("is not recorded");
    mDisk.Deny(mFolder.Path(mRecords), EACCES);
    for (const char* name : {"a.zuproj", "b.zuproj"}) {
        mFolder.Write(std::string("Production/") + name);
        EXPECT_EQ(Move(std::string("Production/") + name, mTrash + '/' + name), 0);
        EXPECT_TRUE(mFolder.Exists(mTrash + '/' + name));
    }
    EXPECT_EQ(log.Count(), 1) << "once";
    mDisk.Allow(mFolder.Path(mRecords));
    for (const Operation step : {Operation::CreateNewFile, Operation::Rename}) {
        mDisk.Fail(step, 1, ENOSPC);
        EXPECT_EQ(WriteRecord(), ENOSPC);
        EXPECT_EQ(Records(), Names{});
    }
    mDisk.FailAfter(Operation::Rename, 1, EIO);
    EXPECT_EQ(WriteRecord(), 0) << "it stands, though its reply was lost";
    EXPECT_EQ(NamesIn(mRecords).size(), 1u);
    fs::remove(mFolder.Path(mRecords + '/' + *NamesIn(mRecords).begin()));
    fs::remove(mFolder.Path(mRecords));
    fs::create_symlink(mFolder.MakeFolder("Elsewhere"), mFolder.Path(mRecords));
    EXPECT_EQ(WriteRecord(), ELOOP);
    EXPECT_TRUE(fs::is_empty(mFolder.Path("Elsewhere")));
}

TEST_F(TrashRecordsTest, ATrashThatIsALinkTakesNothing) {
    fs::create_symlink(mFolder.MakeFolder("Elsewhere"), mFolder.Path(mTrash));
    mFolder.Write("Production/a.zuproj");
    EXPECT_EQ(ErrorOf([&] { Move("Production/a.zuproj", mTrash + "/a.zuproj"); }), ELOOP);
    EXPECT_TRUE(mFolder.Exists("Production/a.zuproj"));
    EXPECT_TRUE(fs::is_empty(mFolder.Path("Elsewhere")));
}

TEST_F(TrashRecordsTest, BrokenLocksAreLoggedBesideThem) {
    const desk::LockRecord broken = MakeForeignRecord(mDesktop);
    mDesktop.mNow += std::chrono::hours(1);
    const auto logBroken = [&](const char* project, const desk::LockRecord& record) {
        desk::LogBrokenLock(mFolder.PathUTF16(project), record);
        mMain.RunUntilIdle();
    };
    logBroken("Production/x.zuproj", broken);
    EXPECT_FALSE(mFolder.Exists(mTrash)) << "nothing was moved there";
    mFolder.MakeFolder(mTrash);
    logBroken("Production/Day 1/R\u00f6lle.zuproj", broken);
    logBroken("Production/x.zuproj", {});
    logBroken("Outside/x.zuproj", broken);
    const std::string file = mRecords + "/broken-locks.jsonl";
    const std::string text = mFolder.Read(file);
    ASSERT_EQ(std::ranges::count(text, '\n'), 2);
    const std::vector<const char*> members{"brokenAt", "user", "owner", "takenAt", "project"};
    EXPECT_EQ(Texts(text.substr(0, text.find('\n')), members),
              "2026-03-02T10:30:00Z ines tomas 2026-03-02T09:30:00Z Day%201/R%C3%B6lle.zuproj");
    EXPECT_EQ(Texts(text.substr(text.find('\n') + 1), members), "2026-03-02T10:30:00Z ines   x.zuproj");

    mFolder.Remove(file);
    fs::create_symlink(mFolder.Write("Elsewhere.txt"), mFolder.Path(file));
    const ExpectLogged log("A broken lock is not recorded");
    logBroken("Production/x.zuproj", broken);
    EXPECT_EQ(mFolder.Read("Elsewhere.txt"), "");
}
