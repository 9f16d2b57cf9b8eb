#include "host/project/ProductionItems.h"
#include "tests/support/HostFixture.h"

using host::UTF16String;

namespace {

class UniqueNamesTest : public HostFixture {
protected:
    std::string Unique(const std::string& name, int start = 1, const host::UTF16StringVec& avoid = {}) {
        return NameOf(host::Utilities::MakeUniqueFilename(mFolder.PathUTF16(name), start, u"_", avoid));
    }
    std::string Copy(const std::string& name, const host::UTF16StringVec& existing = {}) {
        return NameOf(host::GetZuProductionItemCopyPath(mFolder.PathUTF16(name), existing));
    }
    static std::string NameOf(const UTF16String& path) {
        return host::UTF16to8(path.substr(path.rfind(u'/') + 1));
    }
};

std::string Repeat(const std::string& text, std::size_t times) {
    std::string result;
    while (times-- > 0) result += text;
    return result;
}

}  // namespace

TEST_F(UniqueNamesTest, CountsUpBeforeTheProjectExtensionUntilNothingStandsThere) {
    EXPECT_EQ(Unique("x.ZUPROJ", 7), "x_7.ZUPROJ");
    EXPECT_EQ(Unique("Day 1.5"), "Day 1.5_1");
    EXPECT_EQ(Unique(".zuproj"), ".zuproj_1") << "nothing before the extension";
    EXPECT_EQ(Unique("x.zuproj/"), "x.zuproj_1") << "a folder";
    mFolder.Write("x_1.zuproj");
    std::filesystem::create_symlink("nowhere", mFolder.Path("x_2.zuproj"));
    mFolder.MakeFolder("x_3.zuproj");
    EXPECT_EQ(Unique("x.zuproj"), "x_4.zuproj");
    EXPECT_EQ(Unique("x.zuproj", 1, {u"x_4.zuproj", u"X_5.zuproj"}), "x_5.zuproj");
    mDisk.SetGone(true);
    EXPECT_EQ(Unique("x.zuproj"), "x_1.zuproj") << "must not count for ever";
}

TEST_F(UniqueNamesTest, ManyCostOneListingAndDiffer) {
    for (const char* name : {"x.zuproj", "x_1.zuproj", "Y_1.zuproj"}) mFolder.Write(name);
    host::UTF16StringVec paths;
    for (const char* name : {"x.zuproj", "x.zuproj", "y.zuproj", "x.zuproj/"})
        paths.push_back(mFolder.PathUTF16(name));
    mDisk.ResetCounts();
    std::vector<std::string> names;
    for (const UTF16String& path : host::Utilities::MakeUniqueFilenames(paths, 1, u"_"))
        names.push_back(NameOf(path));
    EXPECT_EQ(names, (std::vector<std::string>{"x_2.zuproj", "x_3.zuproj", "y_1.zuproj", "x.zuproj_1"}));
    EXPECT_EQ(mDisk.Count(Operation::ListFolder), 1);
    EXPECT_EQ(mDisk.Count(Operation::Status), 1) << "the volume may take Y_1 and y_1 for one";
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
    names.clear();
    mFolder.Write("x copy.zuproj");
    for (const UTF16String& path : host::GetZuProductionItemCopyPaths(paths)) names.push_back(NameOf(path));
    EXPECT_EQ(names, (std::vector<std::string>{"x copy 2.zuproj", "x copy 3.zuproj", "y copy.zuproj",
                                               "x copy 4.zuproj"}));
}

TEST_F(UniqueNamesTest, StaysWithinWhatCanBeLockedAndNamed) {
    // Two bytes a letter, four a picture, and bytes that are no UTF-8.
    for (const std::string& piece :
         {std::string("a"), std::string("\u00e4"), std::string("\U0001F3AC"), std::string("\xE9")}) {
        const std::string stem = Repeat(piece, 240 / piece.size());
        const std::string project = Unique(stem + ".zuproj", 1000);
        const std::string end = "_1000.zuproj";
        EXPECT_EQ(project, Repeat(piece, (249 - end.size()) / piece.size()) + end);
        const std::string folder = Unique(Repeat(piece, 255 / piece.size()));
        EXPECT_LE(folder.size(), 255u);
        EXPECT_TRUE(folder.ends_with(piece + "_1")) << folder;
    }
}

TEST_F(UniqueNamesTest, CopiesCountOn) {
    EXPECT_EQ(Copy("x.zuproj"), "x copy.zuproj");
    EXPECT_EQ(Copy("Day 1"), "Day 1 copy");
    mFolder.Write("x copy.zuproj");
    EXPECT_EQ(Copy("x.zuproj"), "x copy 2.zuproj");
    EXPECT_EQ(Copy("x copy.zuproj"), "x copy 2.zuproj");
    EXPECT_EQ(Copy("x copy 7.zuproj"), "x copy 8.zuproj");
    EXPECT_EQ(Copy("x copy 7.zuproj", {u"x copy 8.zuproj"}), "x copy 9.zuproj");
    for (const char* name : {"copy", "Reel 2", "x copy 1", "x copy 02", "x copy 12345678", "photocopy"})
        EXPECT_EQ(Copy(name), std::string(name) + " copy");
    EXPECT_EQ(Copy(std::string(240, 'a') + ".zuproj"), std::string(237, 'a') + " copy.zuproj");
}
