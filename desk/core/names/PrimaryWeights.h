#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

struct UCollator;
struct UCollationElements;

namespace desk {

/// The primary weights (UTS #10) that a collator gives to characters, so that the primary level of a name's
/// sort key is put together from a table. That takes a fraction of the time of the collator, and few names
/// differ in case or accents only. Any thread.
///
/// The table is asked of the collator page by page, when a character of a page is first met. What cannot be put
/// together of single characters (contractions, marks that are not in canonical order, pairs of surrogates,
/// digits of other scripts) is left to the collator.
class PrimaryWeights {
public:
    /// `collator`: with runs of digits by their value, normalization, and nothing ignored for its punctuation;
    /// becomes the object's. Takes some milliseconds.
    explicit PrimaryWeights(UCollator* collator);
    ~PrimaryWeights();
    PrimaryWeights(const PrimaryWeights&) = delete;
    PrimaryWeights& operator=(const PrimaryWeights&) = delete;

    /// Appends to `key` bytes that order `text` among other such keys (each byte counts, then the length) as
    /// the primary weights do. False, with `key` as it was, when the table cannot tell.
    bool AppendKey(std::u16string_view text, std::string& key) const;

private:
    static constexpr std::size_t kUnits = 0x10000;
    static constexpr std::size_t kUnitsOfPage = 0x100;

    struct Weight {
        /// Of all primary weights of the character; none is the beginning of another.
        std::array<std::uint8_t, 10> mBytes{};
        std::uint8_t mSize = 0;
        bool mIsKnown = false;
        /// The character may begin, or go on with, what has a weight of its own together with its neighbours.
        bool mBeginsContraction = false;
        bool mContinuesContraction = false;
        /// The canonical combining classes at the begin and the end of its decomposition.
        std::uint8_t mFirstClass = 0;
        std::uint8_t mLastClass = 0;
    };
    using Page = std::array<Weight, kUnitsOfPage>;

    void FindContractions();
    const Weight& WeightOf(char16_t unit) const;
    const Page& MakePage(std::size_t number) const;
    Weight MakeWeight(char16_t unit) const;
    bool TakePrimaries(char16_t unit, Weight& weight) const;
    std::string PrimaryBytesByCollator(char16_t unit) const;

    struct Close {
        void operator()(UCollator* collator) const;
        void operator()(UCollationElements* elements) const;
    };

    std::unique_ptr<UCollator, Close> mCollator;
    std::unique_ptr<UCollationElements, Close> mElements;
    /// Scripts stand in another order than in their weights: the collator alone tells which.
    bool mIsReordered = false;
    /// Which no other character's weight begins with.
    std::uint8_t mNumber = 0;
    std::bitset<kUnits> mBeginContractions;
    std::bitset<kUnits> mContinueContractions;
    /// Guards the collator and the making of pages.
    mutable std::mutex mMutex;
    mutable std::array<std::unique_ptr<const Page>, kUnits / kUnitsOfPage> mOwnPages;
    mutable std::array<std::atomic<const Page*>, kUnits / kUnitsOfPage> mPages{};
};

}  // namespace desk
