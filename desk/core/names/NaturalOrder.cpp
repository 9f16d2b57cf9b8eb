#include "desk/core/names/NaturalOrder.h"

#include <unicode/ucol.h>

#include <QLocale>
#include <QStringView>
#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "desk/core/names/AsciiNumbers.h"
#include "desk/core/names/PrimaryWeights.h"
#include "desk/core/work/ParallelWork.h"
#include "host/core/FoldASCII.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

constexpr char16_t kFirstPrintable = u' ';
constexpr char16_t kLastPrintable = u'~';

/// The collator takes runs of more digits for several numbers (ICU's limit).
constexpr std::size_t kCollatorDigits = 254;

/// So many names are worth a thread: waiting for one costs some of what it spares.
constexpr std::size_t kNamesPerThread = 2500;
constexpr std::size_t kNamesPerThreadByTable = 20'000;
constexpr std::size_t kNamesPerThreadByPrimaries = 5000;
/// The table of primary weights is made when the collator has been asked for so many names: fewer take less
/// time than the table does.
constexpr std::size_t kNamesWorthPrimaries = 5000;
constexpr std::size_t kMostChunks = 8;

QStringView ToView(std::u16string_view text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

QCollator MakeCollator(const QLocale& locale, Qt::CaseSensitivity caseSensitivity) {
    // For the C locale QCollator compares units, without numbers; English has the order of no language.
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    collator.setIgnorePunctuation(false);
    collator.setCaseSensitivity(caseSensitivity);
    return collator;
}

/// With the same options.
UCollator* OpenKeyMaker(const QLocale& locale) {
    UErrorCode error = U_ZERO_ERROR;
    UCollator* collator = ucol_open(locale.bcp47Name().toLatin1().constData(), &error);
    if (U_FAILURE(error)) throw std::runtime_error("There is no collation of names.");
    ucol_setAttribute(collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &error);
    ucol_setAttribute(collator, UCOL_STRENGTH, UCOL_DEFAULT_STRENGTH, &error);
    ucol_setAttribute(collator, UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
    ucol_setAttribute(collator, UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &error);
    return collator;
}

int Sign(int value) {
    return (value > 0) - (value < 0);
}

/// Compares numbers without leading zeros.
int CompareNumbers(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    return Sign(a.compare(b));
}

/// Four units at a time: the high bit of a unit's lane is set, or some bit above 7, if one is no printable
/// ASCII.
constexpr std::uint64_t FindUnprintable(std::uint64_t units) {
    constexpr std::uint64_t kOnes = 0x0001000100010001;
    const std::uint64_t below = (units - kOnes * kFirstPrintable) & ~units & (kOnes * 0x8000);
    const std::uint64_t above = (units | (units + kOnes)) & (kOnes * 0xFF80);
    return below | above;
}

bool IsPrintableAscii(std::u16string_view text) {
    constexpr std::size_t kUnits = sizeof(std::uint64_t) / sizeof(char16_t);
    std::uint64_t found = 0;
    std::uint64_t units;
    for (; text.size() >= kUnits; text.remove_prefix(kUnits)) {
        std::memcpy(&units, text.data(), sizeof units);
        found |= FindUnprintable(units);
    }
    for (char16_t unit : text) found |= FindUnprintable(0x0020002000200000 | unit);
    return found == 0;
}

/// The value of a decimal digit of any script; -1 for other characters.
int DigitValue(char32_t character) {
    return QChar::category(character) == QChar::Number_DecimalDigit ? QChar::digitValue(character) : -1;
}

/// `text` with the decimal digits of all scripts as ASCII digits.
std::u16string WithAsciiDigits(std::u16string_view text) {
    std::u16string result;
    while (!text.empty()) {
        const bool isPair =
            text.size() > 1 && QChar::isHighSurrogate(text[0]) && QChar::isLowSurrogate(text[1]);
        const int digit = DigitValue(isPair ? QChar::surrogateToUcs4(text[0], text[1]) : text[0]);
        const std::size_t units = isPair ? 2 : 1;
        result += digit < 0 ? text.substr(0, units)
                            : std::u16string_view(u"0123456789").substr(static_cast<std::size_t>(digit), 1);
        text.remove_prefix(units);
    }
    return result;
}

/// True when the collator cannot be trusted with the numbers of `text`: they may be too long, or have digits of
/// other scripts, which ICU 72 tells apart from letters in some languages only.
bool MayHaveUnusualNumbers(std::u16string_view text) {
    std::size_t digits = 0;
    for (char16_t unit : text) {
        const bool mayBeOfOtherScript = unit >= 0x0660 && (QChar::isDigit(unit) || QChar::isSurrogate(unit));
        if (mayBeOfOtherScript) return true;
        digits += IsAsciiDigit(unit) ? 1 : 0;
    }
    return digits > kCollatorDigits;
}

/// Writes a number that is too long for the collator so that it orders such numbers by value behind all
/// shorter ones: the largest number that it knows, the number of digits, and the digits in parts; U+FFFF,
/// which ends each, collates behind everything. Parts begin with a 1 that keeps their zeros.
void AppendLongNumber(std::u16string& out, std::u16string_view digits) {
    constexpr std::size_t kPart = kCollatorDigits - 1;
    constexpr char16_t kEnd = u'\uFFFF';
    out.append(kCollatorDigits, u'9') += kEnd;
    for (char digit : std::to_string(digits.size())) out += static_cast<char16_t>(digit);
    for (; !digits.empty(); digits.remove_prefix(std::min(kPart, digits.size()))) {
        out += kEnd;
        out += u'1';
        out += digits.substr(0, kPart);
    }
    out += kEnd;
}

/// `text` with its numbers as the collator can order them; in `storage` where they have to be changed.
std::u16string_view PrepareForCollator(std::u16string_view text, std::u16string& storage) {
    if (!MayHaveUnusualNumbers(text)) return text;
    const std::u16string ascii = WithAsciiDigits(text);
    const char16_t* const end = ascii.data() + ascii.size();
    for (const char16_t* at = ascii.data(); at != end;) {
        if (!IsAsciiDigit(*at)) {
            storage += *at++;
            continue;
        }
        std::u16string_view digits = TakeNumber(at, end);
        if (digits.size() > kCollatorDigits) {
            AppendLongNumber(storage, digits);
        } else {
            (storage += u'0') += digits;  // a lone 0 is a number too
        }
    }
    return storage;
}

std::u16string_view ShownName(std::u16string_view name) {
    const std::u16string_view extension = host::GetProjectFileExtension();
    const bool isProject = host::HasEndingFoldingASCII(name, extension);
    return isProject ? name.substr(0, name.size() - extension.size()) : name;
}

/// Orders names by keys, each of which is made once. That takes most of the time of a listing: of many names,
/// several threads make and sort some each.
class KeySort {
public:
    KeySort(const std::vector<std::u16string_view>& names, std::size_t namesPerThread)
        : mNames(names),
          mKeys(names.size()),
          mChunks(std::clamp<std::size_t>(names.size() / namesPerThread, 1, kMostChunks)) {}

    /// `append` writes a name's key behind others, or answers false if it cannot; then so does this.
    template <class Append>
    bool MakeKeys(Append append) {
        std::atomic<bool> areMade = true;
        RunShared(mChunks.size(), [&](std::size_t chunk) {
            if (!MakeKeysOf(chunk, append)) areMade = false;
        });
        return areMade;
    }

    /// The names' places, by the keys.
    std::vector<std::uint32_t> Order() {
        const std::size_t shared = CountShared();
        RunShared(mChunks.size(), [&](std::size_t chunk) {
            for (auto key = BeginOf(chunk); key != BeginOf(chunk + 1); ++key) TakeHead(*key, shared);
            std::sort(BeginOf(chunk), BeginOf(chunk + 1), IsLess{mNames});
        });
        for (std::size_t width = 1; width < mChunks.size(); width *= 2)
            RunShared((mChunks.size() - 1) / (2 * width) + 1, [&](std::size_t pair) {
                const std::size_t chunk = 2 * width * pair;
                std::inplace_merge(BeginOf(chunk), BeginOf(chunk + width), BeginOf(chunk + 2 * width),
                                   IsLess{mNames});
            });
        std::vector<std::uint32_t> places(mKeys.size());
        std::ranges::transform(mKeys, places.begin(), &Key::mPlace);
        return places;
    }

private:
    struct Key {
        /// The next eight bytes decide most comparisons.
        std::uint64_t mHead = 0;
        std::string_view mBytes;
        std::uint32_t mPlace = 0;
    };
    struct IsLess {
        bool operator()(const Key& a, const Key& b) const {
            if (a.mHead != b.mHead) return a.mHead < b.mHead;
            const int result = a.mBytes.compare(b.mBytes);
            if (result != 0) return result < 0;
            return UserNaturalOrder().CompareByCollator(ShownName(mNames[a.mPlace]),
                                                        ShownName(mNames[b.mPlace])) < 0;
        }
        const std::vector<std::u16string_view>& mNames;
    };
    struct Chunk {
        /// Its keys, one behind the other.
        std::string mBytes;
        /// So many bytes at their beginning are the same.
        std::size_t mShared = 0;
    };

    std::vector<Key>::iterator BeginOf(std::size_t chunk) {
        const std::size_t count = mChunks.size();
        return mKeys.begin() + static_cast<std::ptrdiff_t>(mKeys.size() * std::min(chunk, count) / count);
    }

    template <class Append>
    bool MakeKeysOf(std::size_t number, Append append) {
        constexpr std::size_t kUsualKey = 48;
        const NaturalOrder& order = UserNaturalOrder();
        Chunk& chunk = mChunks[number];
        const auto begin = BeginOf(number);
        const auto end = BeginOf(number + 1);
        chunk.mBytes.clear();
        chunk.mBytes.reserve(static_cast<std::size_t>(end - begin) * kUsualKey);
        std::vector<std::size_t> ends;
        ends.reserve(static_cast<std::size_t>(end - begin));
        for (auto key = begin; key != end; ++key) {
            key->mPlace = static_cast<std::uint32_t>(key - mKeys.begin());
            if (!append(order, ShownName(mNames[key->mPlace]), chunk.mBytes)) return false;
            ends.push_back(chunk.mBytes.size());
        }
        std::size_t at = 0;
        for (auto key = begin; key != end; at = ends[static_cast<std::size_t>(key++ - begin)])
            key->mBytes =
                std::string_view(chunk.mBytes).substr(at, ends[static_cast<std::size_t>(key - begin)] - at);
        chunk.mShared = begin == end ? 0 : begin->mBytes.size();
        for (auto key = begin; key != end; ++key)
            chunk.mShared = CountSharedOf(key->mBytes, begin->mBytes.substr(0, chunk.mShared));
        return true;
    }

    static std::size_t CountSharedOf(std::string_view a, std::string_view b) {
        return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
    }
    /// Names of one folder often begin alike: what all keys share is left out.
    std::size_t CountShared() {
        if (mKeys.empty()) return 0;
        std::size_t shared = mKeys.front().mBytes.size();
        for (std::size_t chunk = 0; chunk < mChunks.size(); ++chunk)
            shared = std::min(
                {shared, mChunks[chunk].mShared, CountSharedOf(mKeys.front().mBytes, BeginOf(chunk)->mBytes)});
        return shared;
    }

    static void TakeHead(Key& key, std::size_t shared) {
        key.mBytes.remove_prefix(shared);
        for (std::size_t i = 0; i < sizeof key.mHead; ++i)
            key.mHead =
                key.mHead << 8 | (i < key.mBytes.size() ? static_cast<unsigned char>(key.mBytes[i]) : 0);
    }

    const std::vector<std::u16string_view>& mNames;
    std::vector<Key> mKeys;
    std::vector<Chunk> mChunks;
};

}  // namespace

NaturalOrder::NaturalOrder(const QLocale& locale)
    : mCollator(MakeCollator(locale, Qt::CaseSensitive)),
      mKeyMaker(OpenKeyMaker(mCollator.locale())),
      mTable(FindTable()) {}

void NaturalOrder::CloseCollator::operator()(UCollator* collator) const {
    ucol_close(collator);
}

int NaturalOrder::Compare(std::u16string_view a, std::u16string_view b) const {
    if (IsUsingTable() && IsPrintableAscii(a) && IsPrintableAscii(b)) return CompareByTable(*mTable, a, b);
    return CompareByCollator(a, b);
}

int NaturalOrder::CompareByCollator(std::u16string_view a, std::u16string_view b) const {
    if (a == b) return 0;
    int result = CompareEquivalents(a, b);
    return result != 0 ? result : Sign(a.compare(b));
}

/// As the collator has it: zero also for strings that it takes for the same.
int NaturalOrder::CompareEquivalents(std::u16string_view a, std::u16string_view b) const {
    std::u16string storageA;
    std::u16string storageB;
    return Sign(
        mCollator.compare(ToView(PrepareForCollator(a, storageA)), ToView(PrepareForCollator(b, storageB))));
}

void NaturalOrder::AppendCollatorKey(std::u16string_view text, std::string& key) const {
    std::u16string storage;
    const std::u16string_view prepared = PrepareForCollator(text, storage);
    const std::size_t before = key.size();
    std::size_t size = prepared.size() * 2 + 32;
    for (std::size_t room = 0; size > room;) {
        room = size;
        key.resize(before + room);
        size = static_cast<std::size_t>(ucol_getSortKey(
            mKeyMaker.get(), prepared.data(), static_cast<std::int32_t>(prepared.size()),
            reinterpret_cast<std::uint8_t*>(key.data() + before), static_cast<std::int32_t>(room)));
    }
    key.resize(before + size);
}

bool NaturalOrder::AppendPrimaryKey(std::u16string_view text, std::string& key) const {
    std::call_once(mTable->mArePrimariesMade, [this] {
        mTable->mPrimaries = std::make_unique<const PrimaryWeights>(OpenKeyMaker(mCollator.locale()));
    });
    return mTable->mPrimaries->AppendKey(text, key);
}

/// The letters' weights, a zero (less than any weight: the shorter text comes first), the weights of case, the
/// text. A number begins with the weight of a digit, followed by its length and its digits.
bool NaturalOrder::AppendSortKey(std::u16string_view text, std::string& key) const {
    if (!IsUsingTable() || text.size() > kLongestSortKeyText || !IsPrintableAscii(text)) return false;
    const auto byte = [](auto value) { return static_cast<char>(value); };
    const std::size_t before = key.size();
    key.resize(before + text.size() * 5 + 1);
    char* out = key.data() + before;
    const char16_t* const end = text.data() + text.size();
    for (const char16_t* at = text.data(); at != end;) {
        if (!IsAsciiDigit(*at)) {
            *out++ = byte(mTable->mWeights[*at++].mLetter);
            continue;
        }
        const std::u16string_view digits = TakeNumber(at, end);
        *out++ = byte(mTable->mWeights[u'0'].mLetter);
        *out++ = byte(digits.size());
        out = std::ranges::transform(digits, out, byte).out;
    }
    *out++ = '\0';
    for (const char16_t unit : text)
        if (!IsAsciiDigit(unit)) *out++ = byte(mTable->mWeights[unit].mCase);
    out = std::ranges::transform(text, out, byte).out;
    key.resize(static_cast<std::size_t>(out - key.data()));
    return true;
}

/// Of printable ASCII.
int NaturalOrder::CompareByTable(const Table& table, std::u16string_view a, std::u16string_view b) {
    const char16_t* atA = a.data();
    const char16_t* atB = b.data();
    const char16_t* const endA = atA + a.size();
    const char16_t* const endB = atB + b.size();
    int caseResult = 0;
    while (atA != endA && atB != endB) {
        if (IsAsciiDigit(*atA) && IsAsciiDigit(*atB)) {
            std::u16string_view numberA = TakeNumber(atA, endA);
            std::u16string_view numberB = TakeNumber(atB, endB);
            if (int result = CompareNumbers(numberA, numberB); result != 0) return result;
            continue;
        }
        if (*atA != *atB) {
            Weight weightA = table.mWeights[*atA];
            Weight weightB = table.mWeights[*atB];
            if (weightA.mLetter != weightB.mLetter) return weightA.mLetter < weightB.mLetter ? -1 : 1;
            if (caseResult == 0) caseResult = weightA.mCase - weightB.mCase;
        }
        ++atA;
        ++atB;
    }
    if (atA != endA || atB != endB) return atA == endA ? -1 : 1;
    return caseResult != 0 ? Sign(caseResult) : Sign(a.compare(b));
}

NaturalOrder::Table::Table() = default;
NaturalOrder::Table::~Table() = default;

std::shared_ptr<const NaturalOrder::Table> NaturalOrder::FindTable() const {
    static std::mutex mutex;
    static std::map<QString, std::shared_ptr<const Table>> tables;
    const std::lock_guard lock(mutex);
    auto& table = tables[mCollator.locale().name()];
    if (!table) {
        const auto made = std::make_shared<Table>();
        DeriveTable(*made);
        table = made;
    }
    return table;
}

void NaturalOrder::DeriveTable(Table& table) const {
    QCollator ignoringCase = MakeCollator(mCollator.locale(), Qt::CaseInsensitive);
    std::vector<char16_t> units;
    for (char16_t unit = kFirstPrintable; unit <= kLastPrintable; ++unit) units.push_back(unit);
    auto compare = [](const QCollator& collator, char16_t a, char16_t b) {
        return collator.compare(QStringView(&a, 1), QStringView(&b, 1));
    };
    std::sort(units.begin(), units.end(), [&](char16_t a, char16_t b) { return compare(mCollator, a, b) < 0; });
    std::stable_sort(units.begin(), units.end(),
                     [&](char16_t a, char16_t b) { return compare(ignoringCase, a, b) < 0; });
    for (std::size_t i = 0; i < units.size(); ++i) {
        bool isNewLetter = i == 0 || compare(ignoringCase, units[i - 1], units[i]) != 0;
        Weight before = i == 0 ? Weight() : table.mWeights[units[i - 1]];
        Weight& weight = table.mWeights[units[i]];
        weight.mLetter = static_cast<std::uint8_t>(before.mLetter + (isNewLetter ? 1 : 0));
        weight.mCase = static_cast<std::uint8_t>(isNewLetter ? 0 : before.mCase + 1);
    }
    table.mIsLikeCollator = IsLikeCollator(table);
}

/// Sorts all pairs of characters by the table and asks the collator whether each stands before the next.
/// Letters only in lower case, and alone in upper case: what two letters make together does not depend on it.
bool NaturalOrder::IsLikeCollator(const Table& table) const {
    std::vector<std::u16string> strings;
    for (char16_t first = kFirstPrintable; first <= kLastPrintable; ++first) {
        strings.emplace_back(1, first);
        if (first >= u'A' && first <= u'Z') continue;
        for (char16_t second = kFirstPrintable; second <= kLastPrintable; ++second) {
            if (second < u'A' || second > u'Z') strings.push_back({first, second});
        }
    }
    std::sort(strings.begin(), strings.end(), [&](const std::u16string& a, const std::u16string& b) {
        return CompareByTable(table, a, b) < 0;
    });
    return std::adjacent_find(strings.begin(), strings.end(), [this](const auto& a, const auto& b) {
               return CompareByCollator(a, b) >= 0;
           }) == strings.end();
}

const NaturalOrder& UserNaturalOrder() {
    thread_local const NaturalOrder order{QLocale().collation()};
    return order;
}

std::vector<std::uint32_t> OrderAsShown(const std::vector<std::u16string_view>& names) {
    const auto appendByTable = [](const NaturalOrder& order, std::u16string_view name, std::string& keys) {
        return order.AppendSortKey(name, keys);
    };
    const auto appendByPrimaries = [](const NaturalOrder& order, std::u16string_view name, std::string& keys) {
        return order.AppendPrimaryKey(name, keys);
    };
    const auto appendByCollator = [](const NaturalOrder& order, std::u16string_view name, std::string& keys) {
        order.AppendCollatorKey(name, keys);
        return true;
    };
    if (KeySort sort(names, kNamesPerThreadByTable); sort.MakeKeys(appendByTable)) return sort.Order();
    static std::atomic<std::size_t> sOthers = 0;
    if ((sOthers += names.size()) >= kNamesWorthPrimaries)
        if (KeySort sort(names, kNamesPerThreadByPrimaries); sort.MakeKeys(appendByPrimaries))
            return sort.Order();
    KeySort sort(names, kNamesPerThread);
    sort.MakeKeys(appendByCollator);
    return sort.Order();
}

}  // namespace desk
