#include "desk/core/language/LanguageTable.h"
#include "host/core/Localizer.h"
#include "tests/support/HostFixture.h"

namespace {

using host::ZString;

class LocalizerTest : public HostFixture {
protected:
    ~LocalizerTest() override { desk::SetLanguage("en", {}); }
    void WriteTable(const std::string& language, const std::string& text) {
        mFolder.Write("languages/" + language + ".json", text);
    }
    static host::UTF16String Column(const std::string& nameAndText) {
        return ZString(("$$$/Vantor/Handlers/ZuProductionFolder/Columns/" + nameAndText).c_str());
    }
};

}  // namespace

TEST_F(LocalizerTest, AKeysDefaultShowsWithoutCommentsAndWithItsArguments) {
    desk::SetLanguage("en", {});
    const struct {
        const char* mKey;
        const char16_t* mText;
    } cases[] = {{"$$$/A/B=a=b", u"a=b"},
                 {"$$$/A/C=Production: #{the name = follows}", u"Production: "},
                 {"$$$/A/D=#{one}Te#{two}xt #1 {x}#{cut", u"Text #1 {x}"},
                 {"$$$/A/E=", u""},
                 {"$$$/A/F", u"$$$/A/F"},
                 {"no key=1#{2} @0", u"no key=1#{2} @1"},
                 {"$$$/A/G=@0 of @1", u"@1 of @0"},  // arguments are not searched
                 {"$$$/A/H=a@b.c @ @2 @10 @99999999999999999999@", u"a@b.c @ @2 @10 @99999999999999999999@"}};
    for (const auto& c : cases) EXPECT_EQ(ZString(c.mKey, {u"@1", u"@0"}), c.mText) << c.mKey;
}

TEST_F(LocalizerTest, LanguagesAndTheirCountries) {
    for (const char* tag : {"de", "de_DE", "de-AT", "de_CH.UTF-8", "de_DE@euro"}) {
        EXPECT_EQ(desk::SetLanguage(tag, mFolder.Path()), "de") << tag;
        EXPECT_EQ(Column("Size=Size"), u"Größe");
        EXPECT_EQ(host::DescribeSystemError(EACCES), u"Keine Berechtigung");
    }
    EXPECT_EQ(ZString("$$$/Unknown/Key=Default"), u"Default");
    for (const char* tag : {"en", "en_GB", "C", "POSIX"}) {
        EXPECT_EQ(desk::SetLanguage(tag, mFolder.Path()), "en") << tag;
        EXPECT_EQ(Column("Size=Size"), u"Size") << "the cache kept the language before";
    }
    for (int error = 1; error < 150; ++error)
        EXPECT_EQ(host::UTF16to8(host::DescribeSystemError(error)), std::generic_category().message(error));
    const ExpectLogged log("no texts in the language");
    for (const char* tag : {"tlh", "../../etc/passwd", "xx_DE"}) EXPECT_EQ(desk::SetLanguage(tag, {}), "en");
    EXPECT_EQ(log.Count(), 3);
}

TEST_F(LocalizerTest, TheProfilesTablesGoBeforeAndABrokenOneIsLeftOut) {
    WriteTable("de", R"({"$$$/Vantor/Handlers/ZuProductionFolder/Columns/Size": "Umfang"})");
    WriteTable("de_AT",
               R"({"$$$/Vantor/Handlers/ZuProductionFolder/Columns/Name": "Benennung", "$$$/T/Bad": 1})");
    WriteTable("fr", R"({"$$$/Vantor/Handlers/ZuProductionFolder/Columns/Size": "Taille"})");
    const ExpectLogged bad("\"$$$/T/Bad\" is no text");
    EXPECT_EQ(desk::SetLanguage("de-AT", mFolder.Path()), "de_AT");
    EXPECT_EQ(Column("Size=Size"), u"Umfang");
    EXPECT_EQ(Column("Name=Name"), u"Benennung");
    EXPECT_EQ(Column("ModDate=Date Modified"), u"Änderungsdatum");
    EXPECT_EQ(desk::SetLanguage("fr", mFolder.Path()), "fr");
    EXPECT_EQ(Column("Size=Size"), u"Taille");

    const ExpectLogged broken("is left out");
    WriteTable("fr", "{\"a\": ");
    EXPECT_EQ(desk::SetLanguage("fr", mFolder.Path()), "en");
    EXPECT_EQ(Column("Size=Size"), u"Size");
}
