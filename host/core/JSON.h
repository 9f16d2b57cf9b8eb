#pragma once

#include <boost/any.hpp>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/core/Strings.h"

/// JSON documents (RFC 8259) as trees of type-erased values. A record is kept in one by a pair of functions
/// beside it: `JSONVariant ToJSON(const Record&)` and `void FromJSON(const JSONVariant&, Record&)`.
namespace host {

/// A value: `std::string` (UTF-8), `double`, `bool`, `std::int64_t`, `std::uint64_t`, `JSONObject`,
/// `JSONArray`, or empty for null.
using JSONVariant = boost::any;
/// Documents share values. What is shared is never changed.
using JSONVariantPtr = std::shared_ptr<const JSONVariant>;
using JSONObject = std::map<std::string, JSONVariantPtr, std::less<>>;
using JSONArray = std::vector<JSONVariantPtr>;
/// The members of an object, each still the text of its value.
using JSONMemberTexts = std::map<std::string, UTF16String, std::less<>>;

/// Thrown when a value is not of the type that is asked for.
class ZUHOST_API JSONBadCast : public std::bad_cast {
public:
    ~JSONBadCast() override;
    const char* what() const noexcept override;
};

/// Thrown for a text that is not read; `what` says why, in English.
class ZUHOST_API JSONParseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~JSONParseError() override;
};

/// The most values of a text that is read.
inline constexpr std::size_t kMostJSONValues = 4'000'000;

/// Reads a text. Of a doubled key the last value counts. A number without fraction that a signed 64-bit integer
/// holds comes as `std::int64_t`, any other as `double`. Throws `JSONParseError` for what is no JSON, for a
/// number that is no finite double, for more values than `kMostJSONValues`, and for more than 1,024 levels of
/// objects and arrays. A text is an object or an array: `JSONParseError` for a lone number, string, truth value
/// or null too. Any thread.
ZUHOST_API JSONVariant JSONParse(std::u16string_view text);

/// Reads a text of an object as `JSONParse` does, for who needs few of its members: each stays as it was
/// written, and `JSONParse` reads those that are objects or arrays. Throws as it does, and `JSONBadCast` for a
/// text of an array. Any thread.
ZUHOST_API JSONMemberTexts JSONParseMembers(std::u16string_view text);

/// Writes an object of members whose values are written already. Any thread.
ZUHOST_API UTF16String GetJSONString(const JSONMemberTexts& members);

/// Writes a value on one line. Members come in the order of their keys' bytes. A number that is not finite
/// becomes null. Half a surrogate pair is written as an escape, so that every path comes back as it was. Throws
/// `JSONBadCast` for a value of any other type than those of `JSONVariant`. Any thread.
ZUHOST_API UTF16String GetJSONString(const JSONVariant& value);

/// The object or array in a value. Throws `JSONBadCast` when it is none.
ZUHOST_API const JSONObject& GetObject(const JSONVariant& value);
ZUHOST_API const JSONArray& GetArray(const JSONVariant& value);

/// The pairs of conversions of plain types. Those from JSON throw `JSONBadCast` for a value of another type,
/// and for a number that the type cannot hold; a `float` takes the nearest number that it can. Any thread.
ZUHOST_API JSONVariant ToJSON(const UTF16String& value);
ZUHOST_API JSONVariant ToJSON(bool value);
ZUHOST_API JSONVariant ToJSON(float value);
ZUHOST_API JSONVariant ToJSON(std::int32_t value);
ZUHOST_API JSONVariant ToJSON(std::uint32_t value);
ZUHOST_API JSONVariant ToJSON(const Rect& value);
ZUHOST_API void FromJSON(const JSONVariant& json, UTF16String& value);
ZUHOST_API void FromJSON(const JSONVariant& json, bool& value);
ZUHOST_API void FromJSON(const JSONVariant& json, float& value);
ZUHOST_API void FromJSON(const JSONVariant& json, std::int32_t& value);
ZUHOST_API void FromJSON(const JSONVariant& json, std::uint32_t& value);
/// An object with the integers "left", "top", "width" and "height"; what is absent is 0.
ZUHOST_API void FromJSON(const JSONVariant& json, Rect& value);

template <class T>
JSONVariant ToJSON(const std::vector<T>& values);
template <class T>
void FromJSON(const JSONVariant& json, std::vector<T>& values);

/// Adds a member, in place of one of that key.
template <class T>
void AddToObject(JSONObject& object, std::string_view key, const T& value) {
    object.insert_or_assign(std::string(key), std::make_shared<const JSONVariant>(ToJSON(value)));
}

/// Adds an element at the end.
template <class T>
void AppendToArray(JSONArray& array, const T& value) {
    array.push_back(std::make_shared<const JSONVariant>(ToJSON(value)));
}

/// The value of a member; null when the object has none of that key. It lives as long as the object.
inline const JSONVariant* GetVariantInObject(const JSONObject& object, std::string_view key) {
    const auto member = object.find(key);
    return member == object.end() ? nullptr : member->second.get();
}

const JSONVariant* GetVariantInObject(JSONObject&& object, std::string_view key) = delete;

/// Reads a member; one that is absent has the default value of its type.
template <class T>
void GetFromObject(const JSONObject& object, std::string_view key, T& value) {
    value = T();
    if (const JSONVariant* member = GetVariantInObject(object, key)) FromJSON(*member, value);
}

template <class T>
JSONVariant ToJSON(const std::vector<T>& values) {
    JSONArray array;
    array.reserve(values.size());
    for (const T& value : values) AppendToArray(array, value);
    return array;
}

template <class T>
void FromJSON(const JSONVariant& json, std::vector<T>& values) {
    const JSONArray& array = GetArray(json);
    values.clear();
    values.resize(array.size());
    for (std::size_t i = 0; i < array.size(); ++i) FromJSON(*array[i], values[i]);
}

}  // namespace host
