#include "host/dialogs/AskOpenFile.h"
#include "host/dialogs/SimpleInputBox.h"
#include "tests/support/ScriptedDialogs.h"

namespace {

using host::UTF16String;
using namespace std::string_literals;

TEST(HostDialogsTest, TheInputBoxGivesOneLineAndKeepsTheValueWhenItIsCancelled) {
    ScriptedDialogs dialogs;
    UTF16String value = u"Untitled";
    dialogs.ExpectText("New Folder", std::nullopt);
    EXPECT_FALSE(host::SimpleInputBox(nullptr, u"New Folder", u"Name", value));
    EXPECT_EQ(value, u"Untitled");
    for (const UTF16String& entered : {u"\r\nReel 1\r\nv2\n"s, u"Reel 1\nv2"s, u"Reel 1\u2028v2"s}) {
        dialogs.ExpectText("New Folder", entered);
        EXPECT_TRUE(host::SimpleInputBox(nullptr, u"New Folder", u"Name", value));
        EXPECT_EQ(value, u"Reel 1 v2");
    }
}

TEST(HostDialogsTest, OnlyFilesOfTheKindAreOpened) {
    ScriptedDialogs dialogs;
    host::UTF16StringVec paths;
    const auto ask = [&] {
        return host::AskOpenFile(u"Add", paths, u"Project (*.zuproj)", u"*.ZUPROJ", u".zuproj", {});
    };
    dialogs.ExpectFiles("Add", {u"/p/One.zuproj", u"/p/Two.ZuProj"});
    EXPECT_TRUE(ask());
    dialogs.ExpectFiles("Add", {u"/p/One.zuproj", u"/p/notes.txt"});
    dialogs.ExpectMessage("Add");
    EXPECT_FALSE(ask());
    EXPECT_NE(dialogs.LastText().find("notes.txt"), std::string::npos);
    EXPECT_EQ(paths.size(), 2u);
}

}  // namespace
