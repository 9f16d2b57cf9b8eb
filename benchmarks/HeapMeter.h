#pragma once

#include <malloc.h>

#include <cstddef>

namespace bench {

/// Bytes of the heap that are in use in all arenas, large blocks that stand alone among them.
inline std::size_t HeapInUse() {
    const auto info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace bench
