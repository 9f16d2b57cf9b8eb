#pragma once

#include <cstddef>
#include <cstdint>

namespace desk {

/// A name's hash (FNV-1a, 64 bits), the same for every type that has the name's UTF-16 units: a set finds what
/// it holds by names that are not kept beside it. Four units go side by side, since each step waits for the one
/// before it.
template <class Name>
std::size_t HashName(const Name& name) {
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t lanes[4] = {0xCBF29CE484222325, 0xAF63BD4C8601B7DF, 0x340D631B7BDDDCDA, 0x8A5CD789635D2DFF};
    const std::size_t size = name.size();
    std::size_t i = 0;
    for (; i + 4 <= size; i += 4)
        for (std::size_t lane = 0; lane < 4; ++lane) lanes[lane] = (lanes[lane] ^ name[i + lane]) * kPrime;
    for (; i < size; ++i) lanes[0] = (lanes[0] ^ name[i]) * kPrime;
    std::uint64_t hash = size;
    for (const std::uint64_t lane : lanes) hash = (hash ^ lane ^ lane >> 29) * 0x9E3779B97F4A7C15;
    return hash ^ hash >> 32;
}

}  // namespace desk
