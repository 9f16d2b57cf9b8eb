#include "host/core/JSON.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "desk/core/names/QtStrings.h"

namespace host {
namespace {

constexpr bool IsHigh(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLow(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

/// The position of the first half of a surrogate pair that stands alone, from `from` on.
std::size_t FindLoneSurrogate(std::u16string_view text, std::size_t from = 0) {
    for (std::size_t i = from; i < text.size(); ++i) {
        if (IsHigh(text[i]) && i + 1 < text.size() && IsLow(text[i + 1]))
            ++i;
        else if (IsHigh(text[i]) || IsLow(text[i]))
            return i;
    }
    return std::u16string_view::npos;
}

void AppendEscape(UTF16String& out, char16_t unit) {
    constexpr char16_t kDigits[] = u"0123456789abcdef";
    out += u"\\u";
    for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[(unit >> shift) & 0xF];
}

/// Halves of surrogate pairs, which UTF-8 does not have, as JSON's escapes.
UTF16String EscapeLoneSurrogates(std::u16string_view text) {
    UTF16String escaped;
    std::size_t copied = 0;
    for (std::size_t lone = FindLoneSurrogate(text); lone != std::u16string_view::npos;
         lone = FindLoneSurrogate(text, copied)) {
        escaped += text.substr(copied, lone - copied);
        AppendEscape(escaped, text[lone]);
        copied = lone + 1;
    }
    return escaped += text.substr(copied);
}

QByteArray ToUTF8(std::u16string_view text) {
    if (FindLoneSurrogate(text) != std::u16string_view::npos) return ToUTF8(EscapeLoneSurrogates(text));
    return QStringView(text.data(), static_cast<qsizetype>(text.size())).toUtf8();
}

/// Counts what may be values before any is made: a small text can ask for much memory.
void RequireFewValues(std::u16string_view text) {
    std::size_t count = 1;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit == u'"')
            isInString = !isInString;
        else if (unit == u'\\')
            ++i;
        else if (!isInString && (unit == u',' || unit == u'[' || unit == u'{'))
            ++count;
    }
    if (count > kMostJSONValues)
        throw JSONParseError("it has more than " + std::to_string(kMostJSONValues) + " values");
}

/// Qt reads documents of objects and arrays only.
QJsonDocument Parse(std::u16string_view text) {
    RequireFewValues(text);
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(ToUTF8(text), &error);
    if (error.error != QJsonParseError::NoError)
        throw JSONParseError("it is no valid JSON, " + error.errorString().toStdString() + " at byte " +
                             std::to_string(error.offset));
    return document;
}

std::string ToKey(const QString& text) {
    return UTF16to8({reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())});
}

JSONVariant FromQt(const QJsonValue& value);

JSONVariantPtr Share(JSONVariant value) {
    return std::make_shared<const JSONVariant>(std::move(value));
}

JSONVariant FromQt(const QJsonObject& object) {
    JSONObject result;
    for (auto member = object.begin(); member != object.end(); ++member)
        result.emplace_hint(result.end(), ToKey(member.key()), Share(FromQt(*member)));
    return result;
}

JSONVariant FromQt(const QJsonArray& array) {
    JSONArray result;
    result.reserve(static_cast<std::size_t>(array.size()));
    for (const QJsonValue& element : array) result.push_back(Share(FromQt(element)));
    return result;
}

JSONVariant FromQtNumber(const QJsonValue& value) {
    // Of two different defaults, the value is neither when it is no integer.
    const std::int64_t integer = value.toInteger(0);
    if (integer != 0 || value.toInteger(1) == 0) return integer;
    return value.toDouble();
}

JSONVariant FromQt(const QJsonValue& value) {
    switch (value.type()) {
        case QJsonValue::Object:
            return FromQt(value.toObject());
        case QJsonValue::Array:
            return FromQt(value.toArray());
        case QJsonValue::String:
            return ToKey(value.toString());
        case QJsonValue::Bool:
            return value.toBool();
        case QJsonValue::Double:
            return FromQtNumber(value);
        default:
            return {};
    }
}

/// Finds the members in the text of an object that has been read without an error.
class MemberScan {
public:
    explicit MemberScan(std::u16string_view text) : mText(text), mNext(text.find(u'{')) {}

    JSONMemberTexts Run() {
        JSONMemberTexts members;
        while (PassTo(u"\"}") == u'"') {
            std::string key = TakeKey();
            PassTo(u":");
            members.insert_or_assign(std::move(key), UTF16String(TakeValue()));
        }
        return members;
    }

private:
    static constexpr std::u16string_view kSpace = u" \t\r\n";

    /// Goes on to the next of these units, and returns it; 0 at the end of the text.
    char16_t PassTo(std::u16string_view units) {
        mNext = std::min(mText.find_first_of(units, mNext), mText.size());
        return mNext < mText.size() ? mText[mNext] : u'\0';
    }

    void PassString() {
        for (++mNext; mNext < mText.size() && mText[mNext] != u'"';) mNext += mText[mNext] == u'\\' ? 2 : 1;
        mNext = std::min(mNext + 1, mText.size());
    }

    std::string TakeKey() {
        const std::size_t begin = mNext;
        PassString();
        const std::u16string_view quoted = mText.substr(begin, mNext - begin);
        if (quoted.find(u'\\') == quoted.npos) return UTF16to8(quoted.substr(1, quoted.size() - 2));
        return ToKey(Parse(u'[' + UTF16String(quoted) + u']').array().at(0).toString());
    }

    /// From a colon to what ends the value.
    std::u16string_view TakeValue() {
        mNext = std::min(mText.find_first_not_of(kSpace, mNext + 1), mText.size());
        const std::size_t begin = mNext;
        for (int depth = 0; mNext < mText.size();) {
            const char16_t unit = mText[mNext];
            if (unit == u'"') {
                PassString();
                continue;
            }
            if (depth == 0 && (unit == u',' || unit == u'}')) break;
            if (unit == u'{' || unit == u'[') ++depth;
            if (unit == u'}' || unit == u']') --depth;
            ++mNext;
        }
        return Trim(begin);
    }

    /// What stands from `begin` to here, without the space at its end.
    std::u16string_view Trim(std::size_t begin) const {
        const std::u16string_view value = mText.substr(begin, mNext - begin);
        return value.substr(0, value.find_last_not_of(kSpace) + 1);
    }

    std::u16string_view mText;
    std::size_t mNext;
};

/// Writes values, one after the other, to the end of a text.
class Writer {
public:
    void Write(const JSONVariant& value) {
        if (value.empty())
            mText += u"null";
        else if (const auto* text = boost::any_cast<std::string>(&value))
            WriteString(*text);
        else if (const auto* object = boost::any_cast<JSONObject>(&value))
            WriteObject(*object);
        else if (const auto* array = boost::any_cast<JSONArray>(&value))
            WriteArray(*array);
        else if (const auto* flag = boost::any_cast<bool>(&value))
            mText += *flag ? u"true" : u"false";
        else
            WriteNumber(value);
    }

    void Write(const JSONMemberTexts& members) {
        std::size_t size = 0;
        for (const auto& [key, value] : members) size += key.size() + value.size() + 4;
        mText.reserve(size);
        mText += u'{';
        for (const auto& [key, value] : members) {
            WriteKey(key);
            mText += value;
        }
        mText += u'}';
    }

    UTF16String Take() { return std::move(mText); }

private:
    void WriteKey(std::string_view key) {
        if (mText.back() != u'{') mText += u',';
        WriteString(key);
        mText += u':';
    }

    void WriteNumber(const JSONVariant& value) {
        if (const auto* integer = boost::any_cast<std::int64_t>(&value))
            WriteDigits(*integer);
        else if (const auto* natural = boost::any_cast<std::uint64_t>(&value))
            WriteDigits(*natural);
        else if (const auto* number = boost::any_cast<double>(&value))
            std::isfinite(*number) ? WriteDigits(*number) : void(mText += u"null");
        else
            throw JSONBadCast();
    }

    template <class Number>
    void WriteDigits(Number number) {
        std::array<char, 32> digits;  // The longest: -2.2250738585072014e-308.
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        mText.append(digits.data(), end);
    }

    void WriteString(std::string_view utf8) {
        mText += u'"';
        // Nearly all of nearly all texts are plain.
        const auto other = std::ranges::find_if_not(utf8, IsPlain);
        mText.append(utf8.begin(), other);
        WriteEscaped(UTF8to16({other, utf8.end()}));
        mText += u'"';
    }

    static bool IsPlain(char byte) { return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\'; }

    void WriteEscaped(std::u16string_view text) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char16_t unit = text[i];
            if (IsHigh(unit) && i + 1 < text.size() && IsLow(text[i + 1]))
                mText += text.substr(i++, 2);
            else if (unit < 0x20 || unit == 0x7F || IsHigh(unit) || IsLow(unit))
                AppendEscape(mText, unit);
            else
                (unit == u'"' || unit == u'\\' ? mText += u'\\' : mText) += unit;
        }
    }

    void WriteObject(const JSONObject& object) {
        mText += u'{';
        for (const auto& [key, value] : object) {
            WriteKey(key);
            Write(*value);
        }
        mText += u'}';
    }

    void WriteArray(const JSONArray& array) {
        mText += u'[';
        for (const JSONVariantPtr& value : array) {
            if (&value != &array.front()) mText += u',';
            Write(*value);
        }
        mText += u']';
    }

    UTF16String mText;
};

template <class T>
const T& Cast(const JSONVariant& value) {
    const T* typed = boost::any_cast<T>(&value);
    if (!typed) throw JSONBadCast();
    return *typed;
}

/// A number of any type, as long as it is one that a `Number` can hold.
template <class Number>
Number CastInteger(const JSONVariant& json) {
    using Limits = std::numeric_limits<Number>;
    const auto* natural = boost::any_cast<std::uint64_t>(&json);
    const std::int64_t value = natural ? static_cast<std::int64_t>(std::min<std::uint64_t>(*natural, INT64_MAX))
                                       : Cast<std::int64_t>(json);
    if (value < std::int64_t{Limits::min()} || value > std::int64_t{Limits::max()}) throw JSONBadCast();
    return static_cast<Number>(value);
}

}  // namespace

JSONBadCast::~JSONBadCast() = default;

const char* JSONBadCast::what() const noexcept {
    return "a JSON value is of another type than is wanted";
}

JSONParseError::~JSONParseError() = default;

JSONVariant JSONParse(std::u16string_view text) {
    const QJsonDocument document = Parse(text);
    return document.isArray() ? FromQt(document.array()) : FromQt(document.object());
}

JSONMemberTexts JSONParseMembers(std::u16string_view text) {
    if (!Parse(text).isObject()) throw JSONBadCast();
    return MemberScan(text).Run();
}

UTF16String GetJSONString(const JSONMemberTexts& members) {
    Writer writer;
    writer.Write(members);
    return writer.Take();
}

UTF16String GetJSONString(const JSONVariant& value) {
    Writer writer;
    writer.Write(value);
    return writer.Take();
}

const JSONObject& GetObject(const JSONVariant& value) {
    return Cast<JSONObject>(value);
}

const JSONArray& GetArray(const JSONVariant& value) {
    return Cast<JSONArray>(value);
}

JSONVariant ToJSON(const UTF16String& value) {
    return UTF16to8(value);
}

JSONVariant ToJSON(bool value) {
    return value;
}

JSONVariant ToJSON(float value) {
    return double{value};
}

JSONVariant ToJSON(std::int32_t value) {
    return std::int64_t{value};
}

JSONVariant ToJSON(std::uint32_t value) {
    return std::uint64_t{value};
}

JSONVariant ToJSON(const Rect& value) {
    JSONObject object;
    AddToObject(object, "left", value.x);
    AddToObject(object, "top", value.y);
    AddToObject(object, "width", value.width);
    AddToObject(object, "height", value.height);
    return object;
}

void FromJSON(const JSONVariant& json, UTF16String& value) {
    value = UTF8to16(Cast<std::string>(json));
}

void FromJSON(const JSONVariant& json, bool& value) {
    value = Cast<bool>(json);
}

void FromJSON(const JSONVariant& json, float& value) {
    const auto* integer = boost::any_cast<std::int64_t>(&json);
    const auto* natural = boost::any_cast<std::uint64_t>(&json);
    const double number = integer   ? static_cast<double>(*integer)
                          : natural ? static_cast<double>(*natural)
                                    : Cast<double>(json);
    constexpr double kMost = std::numeric_limits<float>::max();
    value = static_cast<float>(std::clamp(number, -kMost, kMost));
}

void FromJSON(const JSONVariant& json, std::int32_t& value) {
    value = CastInteger<std::int32_t>(json);
}

void FromJSON(const JSONVariant& json, std::uint32_t& value) {
    value = CastInteger<std::uint32_t>(json);
}

void FromJSON(const JSONVariant& json, Rect& value) {
    const JSONObject& object = GetObject(json);
    GetFromObject(object, "left", value.x);
    GetFromObject(object, "top", value.y);
    GetFromObject(object, "width", value.width);
    GetFromObject(object, "height", value.height);
}

}  // namespace host
