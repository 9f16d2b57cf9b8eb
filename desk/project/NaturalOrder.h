#pragma once

#include <QCollator>
#include <array>
#include <cstdint>
#include <string_view>

#include "host/core/Export.h"

namespace desk {

/// Natural order of names in one language: the Unicode collation of the language (UTS #10, punctuation not
/// ignored) with runs of digits by their value; of what it takes for the same (case counts there already),
/// the UTF-16 units decide.
///
/// Names of printable ASCII are compared by a table of weights that is derived from the collator and kept only
/// if it orders all pairs of characters as the collator does (languages in which "ch" or "aa" is one letter
/// fail that): an order of magnitude faster, and the same order, so that both ways may be mixed.
///
/// One thread at a time: the collator is not safe to share.
class ZUHOST_API NaturalOrder {
public:
    /// `locale`: the one whose language orders the names; the C locale stands for the order of no language.
    explicit NaturalOrder(const QLocale& locale);

    /// Negative, zero or positive; zero only for equal strings.
    int Compare(std::u16string_view a, std::u16string_view b) const;
    /// The same, always by the collator.
    int CompareByCollator(std::u16string_view a, std::u16string_view b) const;

    bool IsUsingTable() const { return mIsUsingTable; }

private:
    struct Weight {
        /// The rank among the characters that differ in more than case.
        std::uint8_t mLetter = 0;
        std::uint8_t mCase = 0;
    };

    void DeriveTable();
    bool IsTableLikeCollator() const;
    int CompareByTable(std::u16string_view a, std::u16string_view b) const;
    int CompareEquivalents(std::u16string_view a, std::u16string_view b) const;

    QCollator mCollator;
    std::array<Weight, 128> mWeights;
    bool mIsUsingTable = false;
};

}  // namespace desk
