#include <QtWidgets>

#include "desk/app/ProgramCommands.h"
#include "desk/core/edges/SystemDesktop.h"
#include "desk/core/names/TemporaryNames.h"
#include "desk/project/lock/LockProtocol.h"
#include "tests/ui/DrivenProgram.h"

namespace {

/// What a session leaves for the next one, with programs that are killed.
class Session : public ProgramRun {
protected:
    Session() {
        SetVariable("QT_QPA_PLATFORM", "offscreen");
        mHome.Write("Harbour/Reel 1.zuproj", "one\r\ntwo\r\n");
        mHome.Write("Harbour/Reel 2.zuproj", "two\n");
    }

    /// With a window that can be driven.
    struct Program {
        QProcess mProcess;
        DrivenProgram mDriver{mProcess};
        DrivenProgram* operator->() { return &mDriver; }
    };
    void StartDriven(Program& program, Arguments projects = {}) {
        std::vector<std::string> arguments{"--profile", mHome.Path("profile"), "--user",
                                           "ines",      "--plugin-dir",        ZU_BINARY_DIR "/tests/driver"};
        for (const std::string& project : projects)
            arguments.insert(arguments.end(), {"--open", mHome.Path(project)});
        arguments.push_back(mHome.Path("Harbour"));
        Start(program.mProcess, arguments);
        EXPECT_TRUE(program->WaitToShow("Harbour — watched"));
    }
    /// What stands in a folder of the profile, but for hidden files, each file as text.
    std::vector<std::string> FilesIn(const std::string& folder) const {
        std::vector<std::string> files;
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator(mHome.Path("profile/" + folder), ignored))
            if (const std::string name = entry.path().filename().string(); !name.starts_with('.'))
                files.push_back(mHome.Read("profile/" + folder + '/' + name));
        return files;
    }
    std::size_t CountKept() const { return FilesIn("Unsaved Text").size(); }
    /// What is remembered of the production, as the panel writes it.
    QJsonObject RememberedView() const {
        const std::string bytes = mHome.Read("profile/Production Panel Settings");
        const QString text(reinterpret_cast<const QChar*>(bytes.data()),
                           static_cast<qsizetype>(bytes.size() / 2));
        const QJsonObject settings = QJsonDocument::fromJson(text.toUtf8()).object();
        return settings.value(QString::fromStdString(mHome.Path("Harbour"))).toObject();
    }
    static std::string Send(int command) { return "send " + std::to_string(command); }

    const std::string mReel = "Harbour/Reel 1.zuproj";
};

TEST_F(Session, UnsavedTextOutlivesKillsUntilItIsSaved) {
    Program first;
    StartDriven(first, {mReel});
    ASSERT_TRUE(first->WaitToShow("Reel 1"));
    first->Do("write zero ");
    EXPECT_TRUE(WaitFor([&] { return CountKept() == 1; }));

    Program meanwhile;
    StartDriven(meanwhile);
    EXPECT_EQ(meanwhile->Ask(Send(desk::kCommandRecoverText)), "disabled") << "its program is alive";
    first->Kill();

    Program second;
    StartDriven(second);
    ASSERT_TRUE(second->WaitToShow("The file has not changed since"));
    EXPECT_TRUE(second->Shows("Unsaved text of "));
    second->Do("press Open Recovered Text");
    ASSERT_TRUE(second->WaitToShow("Reel 1 •"));
    EXPECT_EQ(second->Ask("editor"), R"(["zero one\ntwo\n"])");
    EXPECT_EQ(mHome.Read(mReel), "one\r\ntwo\r\n");
    second->Kill();
    EXPECT_EQ(CountKept(), 1u) << "a crash during the recovery";

    Program third;
    StartDriven(third);
    ASSERT_TRUE(third->WaitToShow("Open Recovered Text"));
    third->Do("press Open Recovered Text");
    ASSERT_TRUE(third->WaitToShow("Reel 1 •"));
    third->Do(Send(desk::kCommandSaveProject));
    EXPECT_TRUE(WaitFor([&] { return CountKept() == 0; }));
    EXPECT_EQ(mHome.Read(mReel), "zero one\r\ntwo\r\n");
    third->Kill();
    meanwhile->Kill();

    Program last;
    StartDriven(last);
    EXPECT_EQ(last->Ask(Send(desk::kCommandRecoverText)), "disabled");
    last->Kill();
}

TEST_F(Session, OpenProjectsComeBackAfterAKill) {
    Program first;
    StartDriven(first, {mReel, "Harbour/Reel 2.zuproj"});
    ASSERT_TRUE(first->WaitToShow("Reel 2"));
    first->Do(Send(desk::kCommandReopenSessionAtStart));
    EXPECT_TRUE(WaitFor([&] {
        const auto records = FilesIn("Sessions");
        return !records.empty() && records[0].find("Reel%202") != std::string::npos &&
               mHome.Exists("profile/Session Settings.json");
    }));
    Program meanwhile;
    StartDriven(meanwhile);
    EXPECT_EQ(meanwhile->Ask(Send(desk::kCommandReopenSession)), "disabled") << "its program is alive";
    first->Kill();
    meanwhile->Kill();
    const desk::SystemDesktop desktop;
    desk::LockRecord owner = MakeLockRecord(desktop, u"ines", desktop.MachineName());
    owner.mBootID = "1";
    const std::string left =
        "profile/" + MakeTemporaryNameFor(desk::TemporaryPurpose::Save, "Session Settings.json", owner);
    mHome.Write(left, "half");

    Program second;
    StartDriven(second);
    EXPECT_TRUE(second->WaitToShow("Reel 2"));
    EXPECT_TRUE(WaitFor([&] { return !mHome.Exists(left); })) << "what a killed program was writing";
    EXPECT_EQ(second->Ask("editor"), R"(["two\n"])");
    EXPECT_TRUE(second->Shows("Reel 1") && !second->Shows("read-only"));
    second->Kill();
}

TEST_F(Session, TheViewIsAsItWasLeft) {
    constexpr int kZoomIn = 30323;
    for (const double zoom : {0.25, 0.5}) {
        Program program;
        StartDriven(program);
        program->Do(Send(kZoomIn));
        EXPECT_TRUE(program->Shows("Harbour"));
        program.mProcess.terminate();
        EXPECT_EQ(Finish(program.mProcess).mExitCode, 0);
        EXPECT_EQ(RememberedView().value(QLatin1String("mZoom")), zoom);
    }
}

TEST_F(Session, ASignalEndsItWhateverIsBeingAskedAndGivesItsLocksUp) {
    constexpr char kLock[] = "Harbour/.Reel 1.zuproj.lock";
    const std::pair<const char*, const char*> asked[] = {{"Harbour/Reel 2.zuproj", "Save as Copy"},
                                                         {"Harbour/none.zuproj", "“none” was not opened"}};
    for (const auto& [project, shown] : asked) {
        Program program;
        StartDriven(program, {mReel, project});
        ASSERT_TRUE(program->WaitToShow("Reel 1"));
        if (mHome.Exists(project)) program->Do(Send(desk::kCommandSaveProjectAsCopy));
        ASSERT_TRUE(program->WaitToShow(shown));
        EXPECT_NE(mHome.Read(kLock).find("\"user\":\"ines\""), std::string::npos) << mHome.Read(kLock);
        program.mProcess.terminate();
        EXPECT_EQ(Finish(program.mProcess).mExitCode, 0);
        EXPECT_FALSE(mHome.Exists(kLock)) << "given up";
        EXPECT_EQ(mHome.Read(mReel), "one\r\ntwo\r\n");
    }
}

}  // namespace
