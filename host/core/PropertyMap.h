#pragma once

#include <boost/any.hpp>
#include <utility>
#include <vector>

#include "host/core/ImmutableString.h"

namespace host {

/// A few named values of any type; keys are unique. Copyable. Any thread, one at a time.
class PropertyMap {
public:
    /// Sets the value of `key`, in place of the one that it has.
    void Set(const ImmutableString& key, boost::any value) {
        for (auto& entry : mEntries)
            if (entry.first == key) {
                entry.second = std::move(value);
                return;
            }
        mEntries.emplace_back(key, std::move(value));
    }

    /// The value of `key`, or null when there is none or it is of another type than T.
    template <class T>
    const T* Find(const ImmutableString& key) const {
        for (const auto& entry : mEntries)
            if (entry.first == key) return boost::any_cast<T>(&entry.second);
        return nullptr;
    }

private:
    std::vector<std::pair<ImmutableString, boost::any>> mEntries;
};

}  // namespace host
