#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>

#include "desk/files/live/NameHash.h"
#include "desk/toolkit/RowAccess.h"

namespace desk {

/// A name whose UTF-16 units are kept in a byte each where that is enough for all of them. Not owned.
class NameText {
public:
    NameText() = default;
    NameText(const void* units, std::size_t size, bool isNarrow)
        : mUnits(units), mSize(size), mIsNarrow(isNarrow) {}

    std::size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    char16_t operator[](std::size_t i) const {
        return mIsNarrow ? static_cast<const unsigned char*>(mUnits)[i]
                         : static_cast<const char16_t*>(mUnits)[i];
    }
    host::UTF16String ToString() const {
        host::UTF16String text(mSize, u'\0');
        CopyTo(text.data());
        return text;
    }
    /// Writes the units from `to` on.
    void CopyTo(char16_t* to) const {
        if (mIsNarrow)
            std::copy_n(static_cast<const unsigned char*>(mUnits), mSize, to);
        else
            std::copy_n(static_cast<const char16_t*>(mUnits), mSize, to);
    }
    friend bool operator==(const NameText& a, std::u16string_view b) {
        if (a.mSize != b.size()) return false;
        return a.mIsNarrow ? std::equal(b.begin(), b.end(), static_cast<const unsigned char*>(a.mUnits))
                           : std::equal(b.begin(), b.end(), static_cast<const char16_t*>(a.mUnits));
    }
    friend bool operator==(const NameText& a, const NameText& b) {
        if (a.mSize != b.mSize) return false;
        for (std::size_t i = 0; i < a.mSize; ++i)
            if (a[i] != b[i]) return false;
        return true;
    }

private:
    const void* mUnits = nullptr;
    std::size_t mSize = 0;
    bool mIsNarrow = false;
};

/// What a row of a directory view keeps: its item's name, in one block of memory, since there are many.
class RowName final : public host::UI_MultiColumnTreeRow::Data {
public:
    static std::unique_ptr<Data> Make(std::u16string_view name) {
        const bool isNarrow = std::ranges::all_of(name, [](char16_t unit) { return unit < 0x100; });
        void* place = ::operator new(sizeof(RowName) + name.size() * (isNarrow ? 1 : sizeof(char16_t)));
        return std::unique_ptr<Data>(::new (place) RowName(name, isNarrow));
    }
    NameText Get() const { return {this + 1, mSize, mIsNarrow != 0}; }

    // The block is larger than the object: it is given back without its size.
    static void operator delete(void* place) { ::operator delete(place); }

private:
    RowName(std::u16string_view name, bool isNarrow)
        : mSize(static_cast<std::uint32_t>(name.size()) & 0x7FFFFFFF), mIsNarrow(isNarrow) {
        void* units = this + 1;
        if (isNarrow)
            std::ranges::transform(name, static_cast<unsigned char*>(units),
                                   [](char16_t unit) { return static_cast<unsigned char>(unit); });
        else
            name.copy(static_cast<char16_t*>(units), name.size());
    }

    std::uint32_t mSize : 31;
    std::uint32_t mIsNarrow : 1;
};

/// The name of a row that stands in a directory view's map; empty otherwise.
inline NameText NameOfRow(const host::UI_MultiColumnTreeRow* row) {
    using Row = host::UI_MultiColumnTreeRow;
    const auto& data = Row::Access::DataOf(const_cast<Row&>(*row));
    return data ? static_cast<const RowName&>(*data).Get() : NameText();
}

/// Hashes and compares the rows of one folder by their names. A row's name must stay while a set holds it.
struct RowByName {
    using is_transparent = void;
    using Row = host::UI_MultiColumnTreeRow;

    std::size_t operator()(std::u16string_view name) const { return HashName(name); }
    std::size_t operator()(const Row* row) const { return HashName(NameOfRow(row)); }
    bool operator()(const Row* a, const Row* b) const { return a == b; }
    bool operator()(const Row* row, std::u16string_view name) const { return NameOfRow(row) == name; }
};

}  // namespace desk
