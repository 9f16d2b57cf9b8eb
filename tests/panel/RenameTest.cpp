#include <QTest>

#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

using namespace std::chrono_literals;

class RenameTest : public CommandsFixture {
protected:
    static constexpr int kRename = 30308;

    void Show(std::initializer_list<Item> items) {
        OpenProductionWith(items);
        mFrame.Window().activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&mFrame.Window()));
        TreeWidget().setFocus();
    }
    QLineEdit* Field() { return TreeWidget().viewport()->findChild<QLineEdit*>(); }
    /// Opens the editor on a row by the command.
    QLineEdit* Begin(const std::string& name) {
        Select({name});
        EXPECT_TRUE(IsEnabled(kRename)) << name;
        Send(kRename);
        EXPECT_TRUE(Field()) << name;
        return Field();
    }
    void TypeName(const char* name, Qt::Key end = Qt::Key_Return) {
        ASSERT_TRUE(Field());
        QTest::keyClicks(Field(), QString::fromUtf8(name));
        QTest::keyClick(Field(), end);
        Settle();
        // A folder gets its name when the editor has gone.
        mMain.Advance(100ms);
        Settle();
    }
    void Rename(const std::string& name, const char* newName) {
        Begin(name);
        TypeName(newName);
    }
    void Click(const std::string& name, bool isDouble = false) {
        const QModelIndex index = TreeWidget().model()->match(
            TreeWidget().model()->index(0, 0), Qt::AccessibleTextRole, QString::fromStdString(name), 1,
            Qt::MatchStartsWith | Qt::MatchRecursive)[0];
        const QPoint point = TreeWidget().visualRect(index).topLeft() + QPoint(60, 10);
        QTest::mouseClick(TreeWidget().viewport(), Qt::LeftButton, {}, point);
        if (isDouble) QTest::mouseDClick(TreeWidget().viewport(), Qt::LeftButton, {}, point);
        mMain.RunUntilIdle();
    }
};

TEST_F(RenameTest, AProjectKeepsItsRowSelectedItsLockAndItsDocumentAndNothingMovesMeanwhile) {
    Show({"Reels/B", "A", "Z"});
    OpenFolder("Reels");
    OpenDocument("Reels/B");
    EXPECT_EQ(Begin("Reels/B")->selectedText(), QStringLiteral("B"));
    Make({"C", "Reels/A"});
    mMain.Advance(3s);
    Settle();
    EXPECT_EQ(ShownRows(), (Rows{"A", "Reels", "  B", "Z"})) << "what others do waits";
    TypeName(" Take 2.zuProj ");
    EXPECT_TRUE(Shows({"A", "C", "Reels", "  A", "  Take 2", "Z"}));
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"Take 2"});
    EXPECT_TRUE(IsProjectOpen(PathOf("Reels/Take 2.zuProj"))) << "the extension is kept as typed";
    EXPECT_EQ(NamesIn(mProduction + "/Reels"), (Names{"A.zuproj", "Take 2.zuProj", ".Take 2.zuProj.lock"}));
    EXPECT_EQ(QApplication::focusWidget(), &TreeWidget());
    Begin("Z");
    QTest::keyClicks(Field(), QStringLiteral("Y"));
    Click("C");
    Settle();
    EXPECT_TRUE(Shows({"A", "C", "Reels", "  A", "  Take 2", "Y"}));
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"C"}) << "the next key is meant for it";
    Rename("Y", "Z");
    Rename("A", "a");
    Begin("A");
    TypeName("Never", Qt::Key_Escape);
    EXPECT_TRUE(Shows({"A", "C", "Reels", "  A", "  Take 2", "Z"})) << "letter case alone is no other name";
}

TEST_F(RenameTest, AFolderKeepsWhatIsOpenInIt) {
    Show({"Reels/Day 1/A", "Reels/Day 2/B", "Trash/Old"});
    for (const char* folder : {"Reels", "Reels/Day 1", "Trash"}) OpenFolder(folder);
    OpenDocument("Reels/Day 1/A");
    Rename("Reels", "Rushes");
    EXPECT_TRUE(Shows({"Rushes", "  Day 1", "    A", "  Day 2", "Trash", "  Old"}));
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"Rushes"});
    EXPECT_TRUE(IsOpen("Rushes/Day 1/A"));
    Rename("Trash/Old", "Older");
    EXPECT_TRUE(Shows({"Rushes", "  Day 1", "    A", "  Day 2", "Trash", "  Older"}));
    Select({"Trash"});
    EXPECT_FALSE(IsEnabled(kRename)) << "it would be no trash any more";
}

TEST_F(RenameTest, WhatCannotBeIsRefusedAndSaysWhy) {
    Make({"Held", "Day/Held too"});
    OtherUserLocks("Held");
    OtherUserLocks("Day/Held too");
    Show({"A", "B"});
    OpenFolder("Day");
    const DiskTree before = OnDiskNow();
    for (const char* name : {"Held", "Day"}) {
        Select({name});
        EXPECT_TRUE(Shows([&] { return !IsEnabled(kRename); })) << name;
    }
    EXPECT_TRUE(
        WhyNot(kRename).starts_with("“Day” is held: “Held too” in “Day” is in use. Locked by edit-bay-2"))
        << WhyNot(kRename);
    Select({"A", "B"});
    EXPECT_EQ(WhyNot(kRename), "Only one item can be renamed at a time.");
    Begin("A");
    Field()->clear();
    mDialogs.ExpectMessage("Invalid Name");
    TypeName("");
    for (const char* name : {"a/b", "..", "/"}) {
        mDialogs.ExpectMessage("Invalid Name");
        Rename("A", name);
        EXPECT_NE(mDialogs.LastText().find("\n/"), std::string::npos) << mDialogs.LastText();
    }
    mDialogs.ExpectMessage("Invalid Name");
    Rename("A", std::string(245, 'x').c_str());
    EXPECT_NE(
        mDialogs.LastText().find("with “.zuproj” at its end it has 252 letters, and a project’s may have 249"),
        std::string::npos)
        << mDialogs.LastText();
    {
        ExpectLogged refused("File exists");
        mDialogs.ExpectMessage("Not Renamed");
        Rename("A", "B");
        EXPECT_EQ(mDialogs.LastText(), "“A.zuproj” could not be renamed. “B.zuproj” exists already.");
        EXPECT_EQ(Field()->selectedText(), "B") << "need not be typed anew";
        TypeName("", Qt::Key_Escape);
    }
    Begin("A");
    OtherUserLocks("A");
    mDialogs.ExpectMessage("Not Renamed");
    TypeName("C");
    EXPECT_EQ(mDialogs.LastText(),
              "“A.zuproj” could not be renamed. edit-bay-2 has it open on machine-of-edit-bay-2.");
    Unlock("A");
    EXPECT_EQ(OnDiskNow(), before);
}

TEST_F(RenameTest, ANameThatIsTypedWhenItsRowsGoIsGivenOrItsLossTold) {
    Show({"A", "B", "Reels/"});
    const auto type = [this](const char* name, const char* newName) {
        Begin(name);
        QTest::keyClicks(Field(), QString::fromUtf8(newName));
    };
    type("A", "Typed");
    CloseProduction();
    mMain.Advance(2s);
    EXPECT_TRUE(mFolder.Exists(OnDisk("Typed.zuproj")));
    OpenProduction();
    type("B", "a/b");
    {
        const ExpectLogged told("“B” keeps its name. “a/b.zuproj” was dropped: The name has a character");
        CloseProduction();
    }
    mMain.Advance(2s);
    OpenProduction();
    type("Reels", "Rushes");
    TreeWidget().setFocus();
    ClosePanel();
    EXPECT_TRUE(mFolder.Exists(OnDisk("Rushes")));
    OpenPanel();
    Settle();
    mMain.Advance(2s);
    type("Rushes", "Dailies");
    QTest::keyClick(Field(), Qt::Key_Return);
    mMain.RunUntilIdle();
    ClosePanel();
    EXPECT_TRUE(mFolder.Exists(OnDisk("Dailies"))) << "not yet renamed when the panel went";
}

TEST_F(RenameTest, ASlowSecondClickBeginsIt) {
    Show({"A", "B"});
    Click("A");
    mMain.Advance(2s);
    EXPECT_FALSE(Field()) << "the first one selects";
    Click("A");
    Click("B");
    mMain.Advance(2s);
    EXPECT_FALSE(Field()) << "another one was selected since";
    Click("B");
    mMain.Advance(300ms);
    EXPECT_FALSE(Field());
    mMain.Advance(300ms);
    EXPECT_TRUE(Field());
}

}  // namespace HandlerSharedProjects
