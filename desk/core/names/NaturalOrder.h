#pragma once

#include <QCollator>
#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/Export.h"

struct UCollator;

namespace desk {

class PrimaryWeights;

/// Natural order of names in one language: the Unicode collation of the language (UTS #10, punctuation not
/// ignored) with runs of digits by their value; of what it takes for the same (case counts there already),
/// the UTF-16 units decide.
///
/// Names of printable ASCII are compared by a table of weights that is derived from the collator and kept only
/// if it orders all pairs of characters as the collator does (languages in which "ch" or "aa" is one letter
/// fail that): an order of magnitude faster, and the same order, so that both ways may be mixed. It is derived
/// once for each language.
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

    /// Appends to `key` the bytes by which `text` is ordered among other such keys (each byte counts, then the
    /// length) as `Compare` orders the texts. False, with `key` as it was, when the table cannot order `text`.
    bool AppendSortKey(std::u16string_view text, std::string& key) const;

    /// The same for any text, by other keys, which are the collator's: equal for what it takes for the same.
    /// Dearer than one comparison, and much cheaper than those of a sort.
    void AppendCollatorKey(std::u16string_view text, std::string& key) const;

    /// The same for nearly any text, by keys that are made much faster, but only order what differs in more
    /// than accents and case: of two texts with the same key `Compare` must be asked.
    bool AppendPrimaryKey(std::u16string_view text, std::string& key) const;

    bool IsUsingTable() const { return mTable->mIsLikeCollator; }

private:
    struct Weight {
        /// The rank among the characters that differ in more than case; from 1.
        std::uint8_t mLetter = 0;
        std::uint8_t mCase = 0;
    };
    struct Table {
        Table();
        ~Table();
        std::array<Weight, 128> mWeights;
        bool mIsLikeCollator = false;
        /// Made when they are first needed.
        mutable std::once_flag mArePrimariesMade;
        mutable std::unique_ptr<const PrimaryWeights> mPrimaries;
    };

    std::shared_ptr<const Table> FindTable() const;
    void DeriveTable(Table& table) const;
    bool IsLikeCollator(const Table& table) const;
    static int CompareByTable(const Table& table, std::u16string_view a, std::u16string_view b);
    int CompareEquivalents(std::u16string_view a, std::u16string_view b) const;

    struct CloseCollator {
        void operator()(UCollator* collator) const;
    };

    QCollator mCollator;
    /// The one that is inside the other, for the sake of keys: the other makes two objects on the heap of each.
    std::unique_ptr<UCollator, CloseCollator> mKeyMaker;
    std::shared_ptr<const Table> mTable;
};

/// The natural order of the user's language, for the calling thread.
ZUHOST_API const NaturalOrder& UserNaturalOrder();

/// The places of items' names in the order in which they are shown: the natural order of the user's language,
/// without the extension of project files. Any thread.
ZUHOST_API std::vector<std::uint32_t> OrderAsShown(const std::vector<std::u16string_view>& names);

}  // namespace desk
