#include "desk/core/names/PrimaryWeights.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/ucoleitr.h>
#include <unicode/uset.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <stdexcept>

#include "desk/core/names/AsciiNumbers.h"

namespace desk {

namespace {

/// From here on stand characters that mean something to the collator itself.
constexpr char16_t kFirstSpecial = 0xFFF0;

void Check(UErrorCode error) {
    if (U_FAILURE(error)) throw std::runtime_error("The weights of characters cannot be found.");
}

/// Of one collation element come two halves where its weights are long (CollationElementIterator).
bool IsSecondHalf(std::uint32_t order) {
    return (order & 0xC0) == 0xC0;
}

}  // namespace

PrimaryWeights::PrimaryWeights(UCollator* collator) : mCollator(collator) {
    UErrorCode error = U_ZERO_ERROR;
    const char16_t zero = u'0';
    mElements.reset(ucol_openElements(collator, &zero, 1, &error));
    Check(error);
    UErrorCode overflow = U_ZERO_ERROR;
    mIsReordered = ucol_getReorderCodes(collator, nullptr, 0, &overflow) > 0;
    mNumber = static_cast<std::uint8_t>(PrimaryBytesByCollator(zero).at(0));
    FindContractions();
}

PrimaryWeights::~PrimaryWeights() = default;

void PrimaryWeights::Close::operator()(UCollator* collator) const {
    ucol_close(collator);
}

void PrimaryWeights::Close::operator()(UCollationElements* elements) const {
    ucol_closeElements(elements);
}

void PrimaryWeights::FindContractions() {
    const std::unique_ptr<USet, decltype(&uset_close)> contractions(uset_openEmpty(), &uset_close);
    UErrorCode error = U_ZERO_ERROR;
    ucol_getContractionsAndExpansions(mCollator.get(), contractions.get(), nullptr, true, &error);
    Check(error);
    for (std::int32_t i = 0; i < uset_getItemCount(contractions.get()); ++i) {
        char16_t units[64];
        UChar32 first = 0, last = 0;
        error = U_ZERO_ERROR;
        const std::int32_t size =
            uset_getItem(contractions.get(), i, &first, &last, units, std::size(units), &error);
        Check(error);
        for (std::int32_t at = 0; at < size; ++at)
            (at == 0 ? mBeginContractions : mContinueContractions).set(units[at]);
    }
}

bool PrimaryWeights::AppendKey(std::u16string_view text, std::string& key) const {
    if (text.size() > kLongestSortKeyText) return false;
    std::uint8_t bytes[kLongestSortKeyText * sizeof(Weight::mBytes)];
    std::uint8_t* out = bytes;
    std::uint8_t lastClass = 0;
    bool isInContraction = false;
    const char16_t* const end = text.data() + text.size();
    for (const char16_t* at = text.data(); at != end;) {
        const Weight& weight = WeightOf(*at);
        const bool isMisplaced = weight.mFirstClass != 0 && lastClass > weight.mFirstClass;
        if (!weight.mIsKnown || isMisplaced || (isInContraction && weight.mContinuesContraction)) return false;
        // A mark may belong to what stands before the marks that precede it.
        isInContraction = weight.mBeginsContraction || (isInContraction && weight.mFirstClass != 0);
        lastClass = weight.mLastClass;
        if (IsAsciiDigit(*at)) {
            const std::u16string_view digits = TakeNumber(at, end);
            *out++ = mNumber;
            *out++ = static_cast<std::uint8_t>(digits.size());
            out = std::ranges::transform(digits, out, [](char16_t unit) {
                      return static_cast<std::uint8_t>(unit);
                  }).out;
        } else {
            out = std::copy_n(weight.mBytes.data(), weight.mSize, out);
            ++at;
        }
    }
    key.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(out - bytes));
    return true;
}

const PrimaryWeights::Weight& PrimaryWeights::WeightOf(char16_t unit) const {
    const Page* const page = mPages[unit / kUnitsOfPage].load(std::memory_order_acquire);
    return (page ? *page : MakePage(unit / kUnitsOfPage))[unit % kUnitsOfPage];
}

const PrimaryWeights::Page& PrimaryWeights::MakePage(std::size_t number) const {
    const std::lock_guard lock(mMutex);
    if (!mOwnPages[number]) {
        auto page = std::make_unique<Page>();
        for (std::size_t i = 0; i < kUnitsOfPage; ++i)
            (*page)[i] = MakeWeight(static_cast<char16_t>(number * kUnitsOfPage + i));
        mOwnPages[number] = std::move(page);
        mPages[number].store(mOwnPages[number].get(), std::memory_order_release);
    }
    return *mOwnPages[number];
}

PrimaryWeights::Weight PrimaryWeights::MakeWeight(char16_t unit) const {
    Weight weight;
    const bool isOtherDigit = u_isdigit(unit) && !IsAsciiDigit(unit);
    if (U16_IS_SURROGATE(unit) || unit >= kFirstSpecial || isOtherDigit) return weight;
    weight.mBeginsContraction = mBeginContractions[unit];
    weight.mContinuesContraction = mContinueContractions[unit];
    weight.mFirstClass =
        static_cast<std::uint8_t>(u_getIntPropertyValue(unit, UCHAR_LEAD_CANONICAL_COMBINING_CLASS));
    weight.mLastClass =
        static_cast<std::uint8_t>(u_getIntPropertyValue(unit, UCHAR_TRAIL_CANONICAL_COMBINING_CLASS));
    weight.mIsKnown = TakePrimaries(unit, weight);
    return weight;
}

/// False when there are too many, or when they cannot be told apart.
bool PrimaryWeights::TakePrimaries(char16_t unit, Weight& weight) const {
    UErrorCode error = U_ZERO_ERROR;
    ucol_setText(mElements.get(), &unit, 1, &error);
    std::string bytes;
    int primaries = 0;
    for (std::int32_t next; (next = ucol_next(mElements.get(), &error)) != UCOL_NULLORDER;) {
        const auto order = static_cast<std::uint32_t>(next);
        const std::uint32_t half = order >> 16;
        if (half != 0 && !IsSecondHalf(order)) ++primaries;
        for (const std::uint32_t byte : {half >> 8, half & 0xFF})
            if (byte != 0) bytes += static_cast<char>(byte);
    }
    if (mIsReordered && primaries == 1) bytes = PrimaryBytesByCollator(unit);
    if (U_FAILURE(error) || bytes.size() > weight.mBytes.size() || (mIsReordered && primaries > 1))
        return false;
    std::ranges::copy(bytes, weight.mBytes.begin());
    weight.mSize = static_cast<std::uint8_t>(bytes.size());
    return true;
}

/// The first level of its sort key, as it is where there is one weight: the collator shortens several.
std::string PrimaryWeights::PrimaryBytesByCollator(char16_t unit) const {
    constexpr char kLevelEnd = 1;
    std::uint8_t key[256];
    const std::int32_t size = ucol_getSortKey(mCollator.get(), &unit, 1, key, sizeof key);
    const std::string_view bytes(reinterpret_cast<const char*>(key),
                                 static_cast<std::size_t>(std::clamp<std::int32_t>(size, 0, sizeof key)));
    return std::string(bytes.substr(0, bytes.find(kLevelEnd)));
}

}  // namespace desk
