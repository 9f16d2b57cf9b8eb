#include "host/core/ImmutableString.h"

#include <mutex>
#include <unordered_set>

namespace host {
namespace {

struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
};

const std::string* Intern(std::string_view text) {
    struct Pool {
        std::mutex mMutex;
        std::unordered_set<std::string, Hash, std::equal_to<>> mTexts;
    };
    static auto& pool = *new Pool;  // Never destroyed: station names are static objects of other libraries.
    const std::lock_guard lock(pool.mMutex);
    const auto found = pool.mTexts.find(text);
    return found != pool.mTexts.end() ? &*found : &*pool.mTexts.emplace(text).first;
}

}  // namespace

ImmutableString::ImmutableString() {
    static const std::string* const empty = Intern({});
    mText = empty;
}

ImmutableString::ImmutableString(std::string_view text) : mText(Intern(text)) {}

}  // namespace host
