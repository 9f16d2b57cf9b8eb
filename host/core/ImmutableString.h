#pragma once

#include <compare>
#include <functional>
#include <string>
#include <string_view>

#include "host/core/Export.h"

namespace host {

/// An interned narrow string (UTF-8): equal texts share one storage for the life of the process,
/// so that copies and comparisons cost a pointer. Used for station names and property keys.
/// Any thread.
class ZUHOST_API ImmutableString {
public:
    ImmutableString();
    explicit ImmutableString(std::string_view text);

    const std::string& Get() const { return *mText; }
    bool IsEmpty() const { return mText->empty(); }

    friend bool operator==(const ImmutableString& a, const ImmutableString& b) { return a.mText == b.mText; }
    /// A stable order within one run of the process; not alphabetical.
    friend auto operator<=>(const ImmutableString& a, const ImmutableString& b) {
        return std::compare_three_way{}(a.mText, b.mText);
    }

private:
    const std::string* mText;
};

}  // namespace host

template <>
struct std::hash<host::ImmutableString> {
    std::size_t operator()(const host::ImmutableString& text) const noexcept {
        return std::hash<const void*>{}(&text.Get());
    }
};
