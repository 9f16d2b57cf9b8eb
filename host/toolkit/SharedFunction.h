#pragma once

#include <functional>
#include <memory>

namespace host {

/// A callable that is shared, so that it can be handed on without copying what it holds.
template <class Signature>
using SharedFunction = std::shared_ptr<std::function<Signature>>;

}  // namespace host
