#include "desk/core/LanguageTable.h"
#include "host/core/Localizer.h"
#include "tests/desk/core/CoreFixture.h"

namespace {

using host::Localizer;
using host::ZString;

constexpr const char* kSize = "$$$/Vantor/Handlers/ZuProductionFolder/Columns/Size=Size";

class LocalizerTest : public CoreFixture {
protected:
    ~LocalizerTest() override { desk::SetLanguage("en", {}); }
    void WriteTable(const std::string& language, const std::string& text) {
        mProfile.Write("languages/" + language + ".json", text);
    }
};

}  // namespace

TEST_F(LocalizerTest, TakesKeysApart) {
    const auto parse = [](std::string_view key) {
        const desk::LocalizationKey parsed = desk::ParseLocalizationKey(key);
        return std::string(parsed.mName) + '|' + parsed.mDefault;
    };
    EXPECT_EQ(parse("$$$/A/B=Text"), "$$$/A/B|Text");
    EXPECT_EQ(parse("$$$/A/B=a=b"), "$$$/A/B|a=b");
    EXPECT_EQ(parse("$$$/A/B=Text#{a comment}"), "$$$/A/B|Text");
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
        EXPECT_EQ(desk::SetLanguage(tag, mProfile.Path()), "de") << tag;
        EXPECT_EQ(Localizer::Get()->Localize(kSize), u"Größe");
    }
    EXPECT_EQ(Localizer::Get()->Localize("$$$/Unknown/Key=Default"), u"Default");
    for (const char* tag : {"en", "en_GB", "C", "POSIX"}) {
        EXPECT_EQ(desk::SetLanguage(tag, mProfile.Path()), "en") << tag;
        EXPECT_EQ(Localizer::Get()->Localize(kSize), u"Size") << "the cache kept the language before";
    }
    const ExpectLogged log("no texts in the language");
    for (const char* tag : {"tlh", "../../etc/passwd", "deutsch", "xx_DE"})
        EXPECT_EQ(desk::SetLanguage(tag, {}), "en");
    EXPECT_EQ(log.Count(), 4);
}

TEST_F(LocalizerTest, TheProfilesTablesGoBefore) {
    WriteTable("de", R"({"$$$/Vantor/Handlers/ZuProductionFolder/Columns/Size": "Umfang"})");
    WriteTable("de_AT",
               R"({"$$$/Vantor/Handlers/ZuProductionFolder/Columns/Name": "Benennung", "$$$/T/Bad": 1})");
    const ExpectLogged log("\"$$$/T/Bad\" is no text");
    EXPECT_EQ(desk::SetLanguage("de-AT", mProfile.Path()), "de_AT");
    EXPECT_EQ(Localizer::Get()->Localize(kSize), u"Umfang");
    EXPECT_EQ(Localizer::Get()->Localize("$$$/Vantor/Handlers/ZuProductionFolder/Columns/Name=Name"),
              u"Benennung");
    EXPECT_EQ(
        Localizer::Get()->Localize("$$$/Vantor/Handlers/ZuProductionFolder/Columns/ModDate=Date Modified"),
        u"Änderungsdatum");
    WriteTable("fr", R"({"$$$/Vantor/Handlers/ZuProductionFolder/Columns/Size": "Taille"})");
    EXPECT_EQ(desk::SetLanguage("fr", mProfile.Path()), "fr");
    EXPECT_EQ(Localizer::Get()->Localize(kSize), u"Taille");
}

TEST_F(LocalizerTest, ABrokenTableIsLeftOut) {
    for (const std::string& text : {std::string("{\"a\": "), std::string("[]"), std::string(2 << 20, ' ')}) {
        WriteTable("fr", text);
        const ExpectLogged log("is left out");
        EXPECT_EQ(desk::SetLanguage("fr", mProfile.Path()), "en");
        EXPECT_EQ(Localizer::Get()->Localize(kSize), u"Size");
        EXPECT_EQ(mProfile.Read("languages/fr.json"), text);
    }
}
