#pragma once

#include <cstddef>
#include <functional>

namespace desk {

/// Calls `body(index)` for each of 0..count, in no order: on this thread, and at the same time on workers of
/// the pool that are free (never more than eight threads, since a volume that is slow to answer answers several
/// at once). Returns when all are done. After the first exception no more are begun, and it is thrown here. Any
/// thread; a worker may call it.
void RunShared(std::size_t count, const std::function<void(std::size_t index)>& body);

}  // namespace desk
