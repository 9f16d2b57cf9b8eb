#include <unistd.h>

#include <QtWidgets>

#include "desk/app/LastSession.h"
#include "desk/app/ProductionCommands.h"
#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectArea.h"
#include "desk/app/SessionCommands.h"
#include "desk/app/StatusLine.h"
#include "desk/core/names/ProcessFacts.h"
#include "desk/core/names/RecordOwner.h"
#include "desk/framework/CommandRouter.h"
#include "desk/project/production/Production.h"
#include "tests/desk/project/ProjectDocumentsFixture.h"

namespace desk {
namespace {

/// One session of the program with what belongs to it.
struct TestSession {
    TestSession(const std::string& profile, ProjectDocuments& documents)
        : mDocuments(documents), mLast(profile) {}
    ~TestSession() { mIsClosing = true, mDocuments.CloseAllProjects(); }

    ProjectDocuments& mDocuments;
    LastSession mLast;
    ProjectArea mArea{nullptr};
    QMainWindow mWindow;
    StatusLine mStatusLine{mWindow};
    ProductionCommands mProductions{mStatusLine, nullptr};
    bool mIsClosing = false;
    SessionCommands mCommands{mArea, mProductions, mLast, [this] { return mIsClosing; }};
};

class LastSessionTest : public ProjectDocumentsFixture {
protected:
    LastSessionTest() {
        for (const char* name : {"Day 1/Reel 2.zuproj", "Day 1/Reel 3.zuproj"}) mFolder.Write(name, "text");
        Start();
    }
    ~LastSessionTest() override {
        mSession.reset();
        mMain.RunUntilIdle();
        Production::Instance().Close();
    }

    TestSession& Session() { return *mSession; }
    void Start() { mSession.emplace(mProfile.Path(), Manager()); }
    /// The process is gone, as seen from the next start, since the machine has been started anew.
    void Restart() {
        mMain.Advance(std::chrono::seconds(1));
        mSession.reset();
        Production::Instance().Close();
        mMain.RunUntilIdle();
        mDesktop.mBootID += '1';
        mDesktop.mNow += std::chrono::minutes(1);
        Start();
    }
    bool IsOffered() const { return CommandRouter::Instance().FindStatus(kCommandReopenSession).mIsEnabled; }
    void Reopen() {
        CommandRouter::Instance().Send(kCommandReopenSession);
        mMain.Advance(std::chrono::seconds(1));
    }
    /// The open projects in the order of their tabs, the one in front in brackets.
    std::string Tabs() {
        std::string names;
        for (const ProjectDocumentRef& document : Session().mArea.GetDocuments()) {
            const std::string name = std::filesystem::path(document->GetFile().mPath).stem().string();
            names += document == Session().mArea.GetActiveDocument() ? '[' + name + "] " : name + ' ';
        }
        return names;
    }
    std::size_t CountRecords() const {
        const std::string folder = mProfile.Path(LastSession::kFolderName);
        return std::filesystem::exists(folder) ? std::distance(std::filesystem::directory_iterator(folder), {})
                                               : 0;
    }

    TemporaryFolder mProfile;
    std::optional<TestSession> mSession;
};

TEST_F(LastSessionTest, ProjectsComeBackInTheirOrderWithTheProductionUnlessTheyWereClosed) {
    EXPECT_FALSE(IsOffered());
    Production::Instance().Open(mFolder.PathUTF16("Day 1"));
    mMain.Advance(std::chrono::seconds(1));
    EXPECT_EQ(CountRecords(), 0u) << "no project";
    for (const char* name : {kProject, "Day 1/Reel 2.zuproj", "Day 1/Reel 3.zuproj"}) OpenAndFind(name);
    Session().mArea.findChild<QTabBar*>()->moveTab(0, 2);
    Manager().SetActiveProject(Find("Day 1/Reel 2.zuproj"));
    EXPECT_EQ(Tabs(), "[Reel 2] Reel 3 Reel 1 ");
    Restart();

    EXPECT_TRUE(IsOffered());
    EXPECT_EQ(Tabs(), "");
    OpenAndFind();  // As who recovers its text first.
    Reopen();
    EXPECT_EQ(Tabs(), "[Reel 2] Reel 3 Reel 1 ");
    EXPECT_EQ(Production::Instance().GetFolder(), mFolder.PathUTF16("Day 1"));
    EXPECT_FALSE(Find()->IsReadOnly());
    EXPECT_FALSE(IsOffered()) << "it is this session's now";
    EXPECT_EQ(CountRecords(), 1u);

    Session().mIsClosing = true;
    Manager().CloseAllProjects();
    Session().mLast.End();
    Restart();
    EXPECT_TRUE(IsOffered()) << "the end of the program closes nothing of it";
    OpenAndFind();
    Restart();
    Reopen();
    EXPECT_EQ(Tabs(), "[Reel 1] ");
    EXPECT_TRUE(IsOffered()) << "a session that was killed has not outdated the one before";
    Manager().CloseAllProjects();
    Session().mLast.End();
    Restart();
    EXPECT_FALSE(IsOffered()) << "closed by hand";
    EXPECT_EQ(CountRecords(), 0u);
}

TEST_F(LastSessionTest, OneMessageNamesWhatIsNotAsItWas) {
    for (const char* name : {kProject, "Day 1/Reel 2.zuproj", "Day 1/Reel 3.zuproj"}) OpenAndFind(name);
    Restart();
    WriteForeignLock();
    mFolder.Remove("Day 1/Reel 3.zuproj");
    mDialogs.ExpectMessage("Last Session");
    Reopen();
    EXPECT_EQ(Tabs(), "Reel 1 [Reel 2] ");
    EXPECT_TRUE(Find()->IsReadOnly());
    EXPECT_TRUE(AsksFor("“Reel 1” is locked by tomas on edit-bay-2") && AsksFor("open read-only"))
        << mDialogs.LastText();
    EXPECT_TRUE(AsksFor("“Reel 3” was not opened") && AsksFor("No such file")) << mDialogs.LastText();
    EXPECT_TRUE(IsOffered()) << "a volume that is away may come back";
}

TEST_F(LastSessionTest, OtherProgramsAndWhatIsNoRecordAreLeftAlone) {
    LockRecord other = MakeRecordOwner();
    other.mPid = getppid();
    other.mProcessStart = ReadProcessFacts(getppid())->mStart;
    const QJsonArray projects{QString::fromStdString("file://" + mFolder.Path(kProject))};
    const auto write = [&](const char* name, const LockRecord& owner) {
        const QJsonObject object{{"owner", WriteRecordOwner(owner)}, {"projects", projects}};
        mProfile.Write(name, QJsonDocument(object).toJson().toStdString());
    };
    write("Sessions/living.json", other);
    other.mMachineID = std::string(32, 'f');
    write("Sessions/elsewhere.json", other);
    mProfile.Write("Sessions/broken.json", "{\"projects\": [");
    mProfile.Write(LastSession::kSettingsName, "[1]");
    const ExpectLogged broken("broken.json"), settings(LastSession::kSettingsName);
    mSession.reset();
    Start();
    EXPECT_FALSE(IsOffered());
    OpenAndFind();
    Session().mLast.End();
    mMain.RunUntilIdle();
    for (const char* name : {"living", "elsewhere", "broken"})
        EXPECT_TRUE(mProfile.Exists(std::string("Sessions/") + name + ".json")) << name;
    EXPECT_EQ(CountRecords(), 4u);
}

}  // namespace
}  // namespace desk
