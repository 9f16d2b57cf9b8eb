#pragma once

#include <cstddef>
#include <cstdint>

namespace desk {

/// A name's hash (FNV-1a, 64 bits), the same for every type that has the name's UTF-16 units: a set finds what
/// it holds by names that are not kept beside it.
template <class Name>
std::size_t HashName(const Name& name) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (std::size_t i = 0; i < name.size(); ++i) hash = (hash ^ name[i]) * 0x100000001B3;
    return hash ^ hash >> 32;
}

}  // namespace desk
