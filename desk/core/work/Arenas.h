#pragma once

#include <malloc.h>

namespace desk {

/// Has all threads of the process share two heaps. The C library gives each thread an arena of its own, up to
/// eight a processor, and each keeps what the largest listing took there: a production that is polled grew by
/// the minute. Workers wait more than they allocate. To be called before the first thread starts (mallopt(3)).
inline void ShareArenas() {
    constexpr int kArenas = 2;
    ::mallopt(M_ARENA_MAX, kArenas);
}

}  // namespace desk
