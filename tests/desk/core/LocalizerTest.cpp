#include "desk/core/LanguageTable.h"
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

TEST_F(LocalizerTest, TakesKeysApart) {
    const auto parse = [](std::string_view key) {
        const desk::LocalizationKey parsed = desk::ParseLocalizationKey(key);
        return std::string(parsed.mName) + '|' + parsed.mDefault;
    };
    EXPECT_EQ(parse("$$$/A/B=a=b"), "$$$/A/B|a=b");
    EXPECT_EQ(parse("$$$/A/B=Production: #{the name = follows}"), "$$$/A/B|Production: ");
    EXPECT_EQ(parse("$$$/A/B=#{one}Te#{two}xt #1 {x}#{cut"), "$$$/A/B|Text #1 {x}");
    EXPECT_EQ(parse("$$$/A/B="), "$$$/A/B|");
    EXPECT_EQ(parse("$$$/A/B"), "$$$/A/B|$$$/A/B");
    EXPECT_EQ(parse("Reel=1#{2}"), "|Reel=1#{2}");
}

TEST_F(LocalizerTest, ReplacesPlaceholdersOnceAndInAnyOrder) {
    desk::SetLanguage("en", {});
    EXPECT_EQ(ZString("$$$/T/A=@0 of @1", {u"1", u"2"}), u"1 of 2");
    EXPECT_EQ(ZString("$$$/T/B=@1 @0 @1", {u"@1", u"@0"}), u"@0 @1 @0") << "arguments are not searched";
    EXPECT_EQ(ZString("$$$/T/C=a@b.c @ @2 @10 @99999999999999999999@", {u"x", u"y"}),
              u"a@b.c @ @2 @10 @99999999999999999999@");
    EXPECT_EQ(ZString("no key @0", {u"x"}), u"no key x");
}

TEST_F(LocalizerTest, LanguagesAndTheirCountries) {
    for (const char* tag : {"de", "de_DE", "de-AT", "de_CH.UTF-8", "de_DE@euro"}) {
        EXPECT_EQ(desk::SetLanguage(tag, mFolder.Path()), "de") << tag;
        EXPECT_EQ(Column("Size=Size"), u"Größe");
    }
    EXPECT_EQ(ZString("$$$/Unknown/Key=Default"), u"Default");
    for (const char* tag : {"en", "en_GB", "C", "POSIX"}) {
        EXPECT_EQ(desk::SetLanguage(tag, mFolder.Path()), "en") << tag;
        EXPECT_EQ(Column("Size=Size"), u"Size") << "the cache kept the language before";
    }
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
