#include "desk/project/document/EditedText.h"

#include <algorithm>
#include <array>
#include <unordered_map>
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

/// Finds for each line of an edited text the line of the original whose place it has: equal lines, told by what
/// is common at both ends and by lines that stand only once in both texts (patience diff), then lines in the
/// same order between those.
class LineAlignment {
public:
    static constexpr std::size_t kNew = static_cast<std::size_t>(-1);

    LineAlignment(const std::vector<Line>& original, const std::vector<Line>& edited)
        : mOriginal(original), mEdited(edited), mPlaces(edited.size(), kNew) {
        std::vector<Range> ranges = {{0, original.size(), 0, edited.size()}};
        while (!ranges.empty()) {
            const Range range = ranges.back();
            ranges.pop_back();
            Align(range, ranges);
        }
    }
    /// By the edited text's lines.
    const std::vector<std::size_t>& Get() const { return mPlaces; }

private:
    struct Range {
        std::size_t mBegin, mEnd;
        std::size_t mEditedBegin, mEditedEnd;
    };
    using Pair = std::pair<std::size_t, std::size_t>;

    bool IsEqual(std::size_t line, std::size_t edited) const {
        return mOriginal[line].mText == mEdited[edited].mText;
    }

    void Align(Range range, std::vector<Range>& further) {
        while (range.mBegin < range.mEnd && range.mEditedBegin < range.mEditedEnd &&
               IsEqual(range.mBegin, range.mEditedBegin))
            mPlaces[range.mEditedBegin++] = range.mBegin++;
        while (range.mBegin < range.mEnd && range.mEditedBegin < range.mEditedEnd &&
               IsEqual(range.mEnd - 1, range.mEditedEnd - 1))
            mPlaces[--range.mEditedEnd] = --range.mEnd;
        if (range.mBegin == range.mEnd || range.mEditedBegin == range.mEditedEnd) return;
        const std::vector<Pair> anchors = FindAnchors(range);
        if (anchors.empty()) return PairUp(range);
        for (const auto& [line, edited] : anchors) {
            mPlaces[edited] = line;
            further.push_back({range.mBegin, line, range.mEditedBegin, edited});
            range.mBegin = line + 1;
            range.mEditedBegin = edited + 1;
        }
        further.push_back(range);
    }

    void PairUp(const Range& range) {
        const std::size_t count = std::min(range.mEnd - range.mBegin, range.mEditedEnd - range.mEditedBegin);
        for (std::size_t i = 0; i < count; ++i) mPlaces[range.mEditedBegin + i] = range.mBegin + i;
    }

    /// The longest run, in the order of both texts, of lines that stand once in each.
    std::vector<Pair> FindAnchors(const Range& range) const {
        struct Places {
            std::size_t mCount = 0, mEditedCount = 0;
            std::size_t mEdited = 0;
        };
        std::unordered_map<std::string_view, Places> texts;
        for (std::size_t i = range.mEditedBegin; i < range.mEditedEnd; ++i) {
            Places& places = texts[mEdited[i].mText];
            ++places.mEditedCount;
            places.mEdited = i;
        }
        for (std::size_t i = range.mBegin; i < range.mEnd; ++i)
            if (const auto found = texts.find(mOriginal[i].mText); found != texts.end()) ++found->second.mCount;
        std::vector<Pair> unique;
        for (std::size_t i = range.mBegin; i < range.mEnd; ++i) {
            const auto found = texts.find(mOriginal[i].mText);
            if (found == texts.end() || found->second.mCount != 1 || found->second.mEditedCount != 1) continue;
            unique.emplace_back(i, found->second.mEdited);
        }
        return LongestRise(unique);
    }

    static std::vector<Pair> LongestRise(const std::vector<Pair>& pairs) {
        // By length: the pair with the smallest end among the rises of that length. And each pair's
        // predecessor.
        std::vector<std::size_t> tops;
        std::vector<std::size_t> before(pairs.size(), kNew);
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            const auto at = std::lower_bound(tops.begin(), tops.end(), i, [&](std::size_t a, std::size_t b) {
                return pairs[a].second < pairs[b].second;
            });
            if (at != tops.begin()) before[i] = *std::prev(at);
            if (at == tops.end())
                tops.push_back(i);
            else
                *at = i;
        }
        std::vector<Pair> rise;
        for (std::size_t i = tops.empty() ? kNew : tops.back(); i != kNew; i = before[i])
            rise.push_back(pairs[i]);
        std::reverse(rise.begin(), rise.end());
        return rise;
    }

    const std::vector<Line>& mOriginal;
    const std::vector<Line>& mEdited;
    std::vector<std::size_t> mPlaces;
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
    std::vector<std::size_t> places;
    if (onlyEnd.empty()) places = LineAlignment(original, edited).Get();

    std::string bytes(mBytes.starts_with(kByteOrderMark) ? kByteOrderMark : std::string_view());
    std::string_view end = onlyEnd.empty() ? original.front().mEnd : onlyEnd;
    for (std::size_t i = 0; i < edited.size(); ++i) {
        bytes += edited[i].mText;
        if (i + 1 == edited.size()) break;
        if (onlyEnd.empty() && places[i] != LineAlignment::kNew && !original[places[i]].mEnd.empty())
            end = original[places[i]].mEnd;
        bytes += end;
    }
    return bytes;
}

}  // namespace desk
