#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "desk/files/live/FolderNames.h"
#include "host/files/FileSearch.h"

using desk::FoldedText;
using desk::FolderNames;
using Kind = desk::FolderNames::Kind;

namespace {

std::set<std::string> Find(const FolderNames& names, std::u16string_view text) {
    std::vector<FolderNames::Item> items;
    names.Find(FoldedText(text), items);
    std::set<std::string> found;
    for (const FolderNames::Item& item : items) EXPECT_TRUE(found.insert(host::UTF16to8(item.mPath)).second);
    return found;
}

/// The rule of a search, unit by unit.
bool Contains(std::u16string_view path, std::u16string_view text) {
    std::u16string_view name = path.substr(path.rfind(u'/') + 1);
    const auto fold = [](char16_t unit) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    };
    const std::u16string_view extension = u".zuproj";
    if (name.size() > extension.size() &&
        std::ranges::equal(name.substr(name.size() - extension.size()), extension, {}, fold))
        name.remove_suffix(extension.size());
    return text.empty() || !std::ranges::search(name, text, {}, fold, fold).empty();
}

}  // namespace

TEST(FolderNamesTest, FindsTheSameAsALookAtEachNameUnitByUnit) {
    std::mt19937 random(7);
    const auto pick = [&](std::size_t count) { return random() % count; };
    // Letters whose fold is near other characters, two and four bytes long ones, and bytes that are no text.
    const std::string bytes = "aAzZ@`[{ .1\xE9\xC3";
    const std::string longer[] = {"\xC3\xA9", "\xC3\x89", "\xF0\x9F\x8E\xAC", "\xF0\x9F\x8E\xAD"};
    const auto letter = [&](std::size_t i) {
        return i < bytes.size() ? bytes.substr(i, 1) : longer[i - bytes.size()];
    };
    std::vector<std::string> all;
    FolderNames::Maker maker(u"/p");
    for (int i = 0; i < 400; ++i) {
        std::string name = std::to_string(i);
        for (std::size_t length = pick(i % 10 == 0 ? 150 : 20); length > 0; --length)
            name += letter(pick(bytes.size() + std::size(longer)));
        if (i % 3 != 0) name += i % 5 == 0 ? ".ZUproj" : ".zuproj";
        all.push_back("/p/" + name);
        if (i % 2 == 0)
            maker.Add(std::string_view(name), i % 3 == 0 ? Kind::Folder : Kind::Project);
        else
            maker.Add(std::u16string_view(host::UTF8to16(name)), i % 3 == 0 ? Kind::Folder : Kind::Project);
    }
    const auto names = std::move(maker).Make();
    for (int i = 0; i < 500; ++i) {
        // A piece of a name, in other case, cut anywhere, also between the halves of a pair.
        const host::UTF16String name = host::UTF8to16(all[pick(all.size())].substr(3));
        host::UTF16String text = name.substr(pick(name.size()), 1 + pick(5));
        for (char16_t& unit : text)
            if (unit < 0x80 && std::isalpha(unit) && pick(2) == 0) unit ^= 0x20;
        std::set<std::string> expected;
        for (const std::string& path : all)
            if (Contains(host::UTF8to16(path), text)) expected.insert(path);
        EXPECT_EQ(Find(*names, text), expected) << "text " << i;
        for (const std::string& path : {all.front(), all[pick(all.size())]})
            EXPECT_EQ(host::FileSearch::IsMatch(host::UTF8to16(path), text), expected.contains(path));
    }
}
