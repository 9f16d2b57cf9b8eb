#include <QtWidgets>

#include "tests/ui/DrivenProgram.h"

namespace {

/// What hands do, with pointer and keys of the real program's window.
class Hands : public ProgramRun {
protected:
    Hands() {
        SetVariable("QT_QPA_PLATFORM", "offscreen");
        mHome.Write("Harbour/Reel 1.zuproj", "one\n");
        mHome.Write("Harbour/Reel 2.zuproj", "two\n");
        mHome.MakeFolder("Harbour/Night");
        Start(mProcess, {"--profile", mHome.Path("profile"), "--plugin-dir", ZU_BINARY_DIR "/tests/driver",
                         "--window-size", "1200x600", mHome.Path("Harbour")});
        Expect("row Reel 1");
    }
    ~Hands() override { mProgram.Kill(); }

    void Expect(const std::string& text) {
        if (!mProgram.WaitToShow(text)) throw std::runtime_error("the rest would mean nothing");
    }
    void ExpectOnDisk(const std::string& path) {
        EXPECT_TRUE(WaitFor([&] { return mHome.Exists("Harbour/" + path); })) << path << mProgram.Ask("texts");
    }
    void Keys(const char* keys) { mProgram.Do(std::string("keys ") + keys); }
    void Write(const char* text) { mProgram.Do(std::string("write ") + text); }

    QProcess mProcess;
    DrivenProgram mProgram{mProcess};
};

TEST_F(Hands, RenameByKeyAndByASlowSecondClick) {
    mProgram.Do("click Reel 1");
    Expect("selected Reel 1");
    Keys("F2");
    Expect("field New name of");
    Write("First");
    Keys("Return");
    Expect("selected First");
    mProgram.Do("click First");
    Expect("field New name of");
    Write("Second");
    Keys("Return");
    Expect("selected Second");
    ExpectOnDisk("Second.zuproj");
    Keys("F2");
    Expect("field New name of");
    Write("Third");
    Keys("Ctrl+Q");
    EXPECT_TRUE(mProcess.waitForFinished() && mHome.Exists("Harbour/Third.zuproj"));
}

TEST_F(Hands, ADayWithoutAMouse) {
    Keys("Ctrl+N");
    Expect("field New name of");
    Write("Day 1");
    Keys("Return");
    Expect("selected Day 1");
    Keys("Shift+F10");
    Expect("menu Rename");
    Keys("Escape");
    Keys("Ctrl+Return");
    ASSERT_TRUE(WaitFor([&] { return mProgram.Ask("editor") == "[\"\"]"; }));
    Write("filmed");
    Keys("Ctrl+S");
    EXPECT_TRUE(WaitFor([&] { return mHome.Read("Harbour/Day 1.zuproj").starts_with("filmed"); }));
    // Nothing is closed while it is being saved.
    EXPECT_TRUE(WaitFor([&] { return !mProgram.Shows("•"); }));
    Keys("Ctrl+W");
    Expect("No project is open");
    Keys("Ctrl+F");
    Expect("\"field");
    Write("day");
    Expect("1 item");
    Keys("Down");
    Expect("selected Day 1");
    Keys("Ctrl+F");
    Keys("Escape");
    Expect("row Reel 1");
    Keys("Down");
    Write("day");
    Expect("selected Day 1");
    Keys("Ctrl+X");
    Expect("was cut");
    Keys("Down");
    Expect("selected Night");
    Keys("Ctrl+V");
    ExpectOnDisk("Night/Day 1.zuproj");
    Expect("selected Day 1");
    Keys("End");
    Expect("selected Reel 2");
    Keys("Del");
    ExpectOnDisk("Trash/Reel 2.zuproj");
}

}  // namespace
