#pragma once

#include <memory>
#include <utility>

namespace desk {

/// A value that may be absent, like `std::optional`, and stands on the heap: no larger than a pointer while it
/// is absent, as it is in most of many.
template <class Value>
class Boxed {
public:
    Boxed() = default;
    Boxed(Value value) : mValue(std::make_unique<Value>(std::move(value))) {}
    Boxed(const Boxed& other) : mValue(other.mValue ? std::make_unique<Value>(*other.mValue) : nullptr) {}
    Boxed(Boxed&&) = default;
    Boxed& operator=(Boxed other) {
        mValue = std::move(other.mValue);
        return *this;
    }
    ~Boxed() = default;

    bool has_value() const { return mValue != nullptr; }
    explicit operator bool() const { return has_value(); }
    const Value& operator*() const { return *mValue; }
    const Value* operator->() const { return mValue.get(); }

private:
    std::unique_ptr<Value> mValue;
};

}  // namespace desk
