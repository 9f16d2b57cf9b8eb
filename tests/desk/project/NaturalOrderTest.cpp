#include <gtest/gtest.h>

#include <QLocale>
#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "desk/core/names/NaturalOrder.h"
#include "host/core/Strings.h"

using desk::NaturalOrder;
using Names = std::vector<std::u16string>;

namespace {

NaturalOrder OrderOf(const char* locale) {
    return NaturalOrder(QLocale(QLatin1String(locale)));
}

int Sign(int value) {
    return (value > 0) - (value < 0);
}

/// Expects `names` to stand in strictly ascending order, each against each.
void ExpectAscending(const NaturalOrder& order, const Names& names) {
    for (std::size_t i = 0; i < names.size(); ++i)
        for (std::size_t j = 0; j < names.size(); ++j)
            EXPECT_EQ(Sign(order.Compare(names[i], names[j])), Sign(static_cast<int>(i) - static_cast<int>(j)))
                << host::UTF16to8(names[i]).substr(0, 40) << " | " << host::UTF16to8(names[j]).substr(0, 40);
}

/// Makes random short strings over `pieces`, many of them nearly equal.
auto RandomNames(Names pieces) {
    return [pieces = std::move(pieces), random = std::mt19937(20)]() mutable {
        std::u16string name;
        for (auto left = random() % 6; left > 0; --left) name += pieces[random() % pieces.size()];
        return name;
    };
}

/// What stands between the bars.
Names Split(const std::u16string& text) {
    Names names(1);
    for (const char16_t unit : text) unit == u'|' ? void(names.emplace_back()) : names.back().push_back(unit);
    return names;
}

Names AsciiPieces() {
    Names pieces{u"00", u"10", u"007", u"ch", u"Aa", u"DZ"};
    for (char16_t unit = u' '; unit <= u'~'; ++unit) pieces.emplace_back(1, unit);
    return pieces;
}

}  // namespace

TEST(NaturalOrder, NumbersByValueThenLettersThenCase) {
    const std::u16string digits300 = u"1" + std::u16string(299, u'0');
    for (const char* locale : {"en_US", "C", "de_DE"}) {
        SCOPED_TRACE(locale);
        ExpectAscending(
            OrderOf(locale),
            Split(u"| |_|-|1|2|10|99999999999999999999998|99999999999999999999999|a|A|a (2)|a 1|a 02|a 2|a 10|"
                  u"a_1|a1|a2|A10|ab|Reel 9|reel 10|Reel 10|Reel 10b|Reel 010c"));
    }
    ExpectAscending(OrderOf("en_US"), {u"x" + std::u16string(254, u'9'), u"x" + digits300,
                                       u"x" + digits300.substr(0, 299) + u"1", u"y"});
    // Longer than what the collator takes for one number; the accent keeps the table out.
    const std::u16string nines(254, u'9');
    const std::u16string zeros(300, u'0');
    ExpectAscending(OrderOf("en_US"),
                    {u"\u00E91", u"\u00E9" + zeros + u"2", u"\u00E9" + nines, u"\u00E9" + nines + u"z",
                     u"\u00E91" + zeros + u"b", u"\u00E92" + zeros + u"a", u"\u00E93" + zeros.substr(1) + u"1",
                     u"\u00E99" + zeros, u"\u00E91" + zeros + u"0", u"\u00E9a"});
}

TEST(NaturalOrder, FollowsTheLanguage) {
    ExpectAscending(OrderOf("en_US"), {u"a", u"\u00E4", u"b", u"ch", u"d", u"z"});
    ExpectAscending(OrderOf("sv_SE"), {u"a", u"b", u"z", u"\u00E5", u"\u00E4"});
    ExpectAscending(OrderOf("cs_CZ"), {u"c", u"cz", u"h", u"ch", u"i"});
    ExpectAscending(OrderOf("da_DK"), {u"A", u"a", u"ab", u"z", u"aa"});
}

TEST(NaturalOrder, TableKeysAndCollatorAreOneOrder) {
    auto name = RandomNames(AsciiPieces());
    for (const char* locale : {"en_US", "C", "de_DE", "sv_SE", "tr_TR", "et_EE", "mt_MT", "ja_JP"}) {
        const NaturalOrder order = OrderOf(locale);
        ASSERT_TRUE(order.IsUsingTable()) << locale;
        for (int i = 0; i < 20'000; ++i) {
            const std::u16string a = name(), b = name();
            std::string keyA, keyB;
            ASSERT_TRUE(order.AppendSortKey(a, keyA) && order.AppendSortKey(b, keyB));
            const int byCollator = order.CompareByCollator(a, b);
            ASSERT_TRUE(order.Compare(a, b) == byCollator && Sign(keyA.compare(keyB)) == byCollator)
                << locale << ": " << host::UTF16to8(a) << " | " << host::UTF16to8(b);
        }
    }
}

TEST(NaturalOrder, PrimaryKeysOrderWhatTheCollatorOrders) {
    auto name = RandomNames(Split(
        u"a|B|\u00E6|\u00DF|\u00C5|a\u030A|\u0323|\u0301|\u0E38|\u094D|\u0438|\u0306|\u0416|\u03B1|\u6771|\u4EAC|\uD55C|\u0E40|"
        u"\u0E01|\u3042|\u30FC|\u2026|\u00BD|\u00B2|\u00B7|\u00AD|\u0001|\u0661|\uFFFE|\xD83C|l|L|c|h|y|1|0|10|-| "));
    for (const char* locale :
         {"en_US", "de_DE", "sv_SE", "da_DK", "cs_CZ", "ca_ES", "ru_RU", "ja_JP", "zh_CN", "th_TH", "fr_CA"}) {
        const NaturalOrder order = OrderOf(locale);
        int ordered = 0;
        for (int i = 0; i < 20'000; ++i) {
            const std::u16string a = name(), b = name();
            std::string keyA, keyB;
            if (!order.AppendPrimaryKey(a, keyA) || !order.AppendPrimaryKey(b, keyB)) continue;
            if (keyA == keyB) continue;
            ++ordered;
            ASSERT_EQ(Sign(keyA.compare(keyB)), order.CompareByCollator(a, b))
                << locale << ": " << host::UTF16to8(a) << " | " << host::UTF16to8(b);
        }
        EXPECT_GT(ordered, 5'000) << locale;
    }
}

TEST(NaturalOrder, IsATotalOrderOfAllStrings) {
    Names pieces = Split(
        u"a|A|b|1|01|2|10|-| "
        u"|_|\u00E4|a\u0308|\u0660|\u0661|\u00B2|\xDCE9|\xD83C|\uFFFF|\u0001|\u00AD|\uFB01|\u4E2D|ch");
    pieces.insert(pieces.end(),
                  {std::u16string(1, u'\0'), std::u16string(260, u'7'), std::u16string(260, u'0')});
    auto name = RandomNames(pieces);
    for (const char* locale : {"en_US", "cs_CZ"}) {
        const NaturalOrder order = OrderOf(locale);
        for (int i = 0; i < 20'000; ++i) {
            Names three{name(), name(), name()};
            std::sort(three.begin(), three.end(),
                      [&](const auto& a, const auto& b) { return order.Compare(a, b) < 0; });
            const auto& [a, b, c] = std::tie(three[0], three[1], three[2]);
            ASSERT_EQ(order.Compare(a, b) == 0, a == b);
            ASSERT_TRUE(order.Compare(a, b) <= 0 && order.Compare(b, a) >= 0 && order.Compare(b, c) <= 0 &&
                        order.Compare(a, c) <= 0)
                << host::UTF16to8(a) << " | " << host::UTF16to8(b) << " | " << host::UTF16to8(c);
        }
    }
}

TEST(NaturalOrder, OrdersItemsAsShownByKeysOrByTheCollator) {
    using Places = std::vector<std::uint32_t>;
    EXPECT_EQ(desk::OrderAsShown({u"Take 10", u"take 9", u"Take 9", u"Edit"}), (Places{3, 1, 2, 0}));
    EXPECT_EQ(desk::OrderAsShown({u"Take 10", u"T\u00E4ke 9", u"Take 9", u"Edit"}), (Places{3, 2, 1, 0}));
    EXPECT_EQ(desk::OrderAsShown({u"Take b.zuproj", u"Take.ZUPROJ", u"Take.", u"Take a.zuproj"}),
              (Places{1, 3, 0, 2}));
    const std::u16string longName(300, u'1');
    EXPECT_EQ(desk::OrderAsShown({longName, u"9"}), (Places{1, 0}));
    // Enough for the table of primary weights; the last pieces only the collator can order.
    for (const char16_t* more : {u"", u"|\u0661|\u0323\u0301|\xDCE9"}) {
        auto name = RandomNames(Split(u"a|A|1|01|10|-| |\u00E4|a\u0308|\u00AD|\u4E2D" + std::u16string(more)));
        std::set<std::u16string> made;
        while (made.size() < 6'000) made.insert(name());
        const std::vector<std::u16string_view> names(made.begin(), made.end());
        const Places order = desk::OrderAsShown(names);
        EXPECT_TRUE(std::ranges::is_sorted(order, [&](std::uint32_t a, std::uint32_t b) {
            return desk::UserNaturalOrder().Compare(names[a], names[b]) < 0;
        }));
    }
}
