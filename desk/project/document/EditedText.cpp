#include "desk/project/document/EditedText.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace desk {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// U+2028 and U+2029.
constexpr std::string_view kLineSeparator = "\xE2\x80\xA8";
constexpr std::string_view kParagraphSeparator = "\xE2\x80\xA9";
constexpr char16_t kReplacement = 0xFFFD;

constexpr std::array<std::string_view, 4> kLineEnds = {"\r\n", "\n", "\r", kParagraphSeparator};

bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Characters with a meaning of their own inside Qt's text documents.
bool IsTakenByEditor(char16_t unit) {
    return unit == 0xFDD0 || unit == 0xFDD1 || unit == 0xFFFC;
}

bool HasLoneSurrogate(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            ++i;
        else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i]))
            return true;
    }
    return false;
}

struct Line {
    std::string_view mText;
    /// One of `kLineEnds`; empty for the last line.
    std::string_view mEnd;
};

std::string_view WithoutMark(std::string_view bytes) {
    if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(kByteOrderMark.size());
    return bytes;
}

/// The end that begins at `at`; empty when none does.
std::string_view FindEnd(std::string_view text, std::size_t at) {
    for (const std::string_view end : kLineEnds)
        if (text.substr(at).starts_with(end)) return end;
    return {};
}

/// The last line has no end; a text that ends with a line end has an empty last line.
std::vector<Line> SplitLines(std::string_view text) {
    std::vector<Line> lines;
    std::size_t begin = 0;
    for (std::size_t at = text.find_first_of("\r\n\xE2"); at != std::string_view::npos;
         at = text.find_first_of("\r\n\xE2", at)) {
        const std::string_view end = FindEnd(text, at);
        if (end.empty()) {
            ++at;
            continue;
        }
        lines.push_back({text.substr(begin, at - begin), end});
        begin = at += end.size();
    }
    lines.push_back({text.substr(begin), {}});
    return lines;
}

/// Finds for a line of an edited text the line of the original whose place it has: equal lines at the beginning
/// and at the end, and between these the lines in their order.
class LineAlignment {
public:
    LineAlignment(const std::vector<Line>& original, const std::vector<Line>& edited)
        : mOriginalCount(original.size()), mEditedCount(edited.size()) {
        const auto isEqual = [](const Line& a, const Line& b) { return a.mText == b.mText; };
        const auto begin =
            std::mismatch(original.begin(), original.end(), edited.begin(), edited.end(), isEqual).first;
        mEqualAtBegin = static_cast<std::size_t>(begin - original.begin());
        const auto most = static_cast<std::ptrdiff_t>(std::min(mOriginalCount, mEditedCount) - mEqualAtBegin);
        const auto end =
            std::mismatch(original.rbegin(), original.rbegin() + most, edited.rbegin(), isEqual).first;
        mEqualAtEnd = static_cast<std::size_t>(end - original.rbegin());
    }

    /// Absent for a line that has been added.
    std::optional<std::size_t> PlaceOf(std::size_t edited) const {
        if (edited >= mEditedCount - mEqualAtEnd) return edited + mOriginalCount - mEditedCount;
        if (edited >= mOriginalCount - mEqualAtEnd) return std::nullopt;
        return edited;
    }

private:
    std::size_t mOriginalCount, mEditedCount;
    std::size_t mEqualAtBegin = 0, mEqualAtEnd = 0;
};

/// Empty when the lines end in more than one way.
std::string_view FindOnlyEnd(const std::vector<Line>& lines) {
    if (lines.size() == 1) return "\n";
    for (std::size_t i = 1; i + 1 < lines.size(); ++i)
        if (lines[i].mEnd != lines[0].mEnd) return {};
    return lines[0].mEnd;
}

/// What the editor shows as UTF-8, with '\n' for each end of a line.
std::string ToEditedBytes(std::u16string_view editorText, bool keepsLineSeparators) {
    host::UTF16String text(editorText);
    for (std::size_t i = 0; i < text.size(); ++i) {
        char16_t& unit = text[i];
        if (unit == 0x2029 || (unit == 0x2028 && !keepsLineSeparators)) unit = u'\n';
        if (unit == 0 || IsTakenByEditor(unit)) unit = kReplacement;
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            ++i;
        else if (IsHighSurrogate(unit) || IsLowSurrogate(unit))
            unit = kReplacement;
    }
    return host::UTF16to8(text);
}

}  // namespace

EditedText::Obstacle EditedText::FindObstacle(std::string_view bytes) {
    if (bytes.find('\0') != std::string_view::npos) return Obstacle::NoText;
    const host::UTF16String text = host::UTF8to16(bytes);
    if (HasLoneSurrogate(text)) return Obstacle::NoText;
    if (std::any_of(text.begin(), text.end(), IsTakenByEditor)) return Obstacle::Characters;
    const std::vector<Line> lines = SplitLines(WithoutMark(bytes));
    if (lines.size() > kMostLines) return Obstacle::ManyLines;
    for (const Line& line : lines)
        if (line.mText.size() > kLongestLine) return Obstacle::LongLine;
    return Obstacle::None;
}

EditedText::EditedText(std::string bytes) : mBytes(std::move(bytes)) {}

host::UTF16String EditedText::GetEditorText() const {
    std::string text;
    text.reserve(mBytes.size());
    for (const Line& line : SplitLines(WithoutMark(mBytes))) {
        text += line.mText;
        if (!line.mEnd.empty()) text += '\n';
    }
    return host::UTF8to16(text);
}

std::string EditedText::ToBytes(std::u16string_view editorText) const {
    const std::vector<Line> original = SplitLines(WithoutMark(mBytes));
    const bool keepsLineSeparators = mBytes.find(kLineSeparator) != std::string::npos;
    const std::string editedBytes = ToEditedBytes(editorText, keepsLineSeparators);
    std::vector<Line> edited = SplitLines(editedBytes);
    const std::string_view onlyEnd = FindOnlyEnd(original);
    const LineAlignment alignment(original, edited);

    std::string bytes(mBytes.starts_with(kByteOrderMark) ? kByteOrderMark : std::string_view());
    std::string_view end = onlyEnd.empty() ? original.front().mEnd : onlyEnd;
    for (std::size_t i = 0; i < edited.size(); ++i) {
        bytes += edited[i].mText;
        if (i + 1 == edited.size()) break;
        const auto place = alignment.PlaceOf(i);
        if (place && !original[*place].mEnd.empty()) end = original[*place].mEnd;
        bytes += end;
    }
    return bytes;
}

}  // namespace desk
