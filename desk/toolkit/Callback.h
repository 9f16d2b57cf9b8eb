#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "desk/core/log/Log.h"

namespace desk {

/// Calls a shared callback, if there is one; it may replace itself meanwhile. What it throws is logged, so
/// that it does not pass through Qt, and answered with an empty result.
template <class Result, class... Parameters, class... Arguments>
Result Call(const std::shared_ptr<std::function<Result(Parameters...)>>& callback, Arguments&&... arguments) {
    if (callback && *callback) {
        const auto keptAlive = callback;
        try {
            return (*keptAlive)(std::forward<Arguments>(arguments)...);
        } catch (const std::exception& error) {
            Log(LogLevel::Error, std::string("A callback of a tree failed: ") + error.what());
        }
    }
    if constexpr (!std::is_void_v<Result>) return Result();
}

template <class Function>
bool IsSet(const std::shared_ptr<Function>& callback) {
    return callback && *callback;
}

}  // namespace desk
