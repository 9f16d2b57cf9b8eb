#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <string_view>

#include "desk/toolkit/RowAccess.h"

namespace desk {

/// What a row of a directory view keeps: its item's name, in one block of memory, since there are many.
class RowName final : public host::UI_MultiColumnTreeRow::Data {
public:
    static std::unique_ptr<Data> Make(std::u16string_view name) {
        void* place = ::operator new(sizeof(RowName) + name.size() * sizeof(char16_t));
        return std::unique_ptr<Data>(::new (place) RowName(name));
    }
    std::u16string_view Get() const { return {Units(), mLength}; }

    // The block is larger than the object: it is given back without its size.
    static void operator delete(void* place) { ::operator delete(place); }

private:
    explicit RowName(std::u16string_view name) : mLength(static_cast<std::uint32_t>(name.size())) {
        name.copy(const_cast<char16_t*>(Units()), name.size());
    }
    const char16_t* Units() const { return reinterpret_cast<const char16_t*>(this + 1); }

    std::uint32_t mLength;
};

/// The name of a row that stands in a directory view's map; empty otherwise.
inline std::u16string_view NameOfRow(const host::UI_MultiColumnTreeRow* row) {
    using Row = host::UI_MultiColumnTreeRow;
    const auto& data = Row::Access::DataOf(const_cast<Row&>(*row));
    return data ? static_cast<const RowName&>(*data).Get() : std::u16string_view();
}

}  // namespace desk
