#include "desk/core/durable/CacheWaits.h"

namespace desk {

namespace {

thread_local int sScopes = 0;

}  // namespace

ScNoCacheWaits::ScNoCacheWaits() {
    ++sScopes;
}

ScNoCacheWaits::~ScNoCacheWaits() {
    --sScopes;
}

bool ScNoCacheWaits::AreOff() {
    return sScopes > 0;
}

}  // namespace desk
