#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// A text file as an editor shows it, and the way back to its bytes: what was not edited comes back byte for
/// byte. The editor knows lines only; which byte order mark the file has, how each line ends, and whether the
/// last one ends at all, is kept here. A value type; any thread.
///
/// The text for the editor has '\n' between lines and nowhere else, and no byte order mark. From the editor
/// both '\n' and U+2029 (as `QTextDocument::toRawText` gives) separate lines; everything else stands for itself
/// (`toPlainText` would turn U+00A0 and U+2028 into others).
class ZUHOST_API EditedText {
public:
    /// Why bytes cannot be edited as text without harm.
    enum class Obstacle {
        None,
        /// NUL, or no well-formed UTF-8 (RFC 3629).
        NoText,
        /// Characters that an editor does not give back: U+FDD0, U+FDD1 and U+FFFC, which Qt uses itself.
        Characters,
        /// A line of more than `kLongestLine` bytes, or more than `kMostLines`: an editor would take seconds to
        /// show them, or at each key.
        LongLine,
        ManyLines,
    };
    static constexpr std::size_t kLongestLine = 256 * 1024;
    static constexpr std::size_t kMostLines = 200'000;

    static Obstacle FindObstacle(std::string_view bytes);

    EditedText() = default;
    /// `bytes` without an obstacle.
    explicit EditedText(std::string bytes);

    host::UTF16String GetEditorText() const;

    /// The bytes that stand for what the editor shows now. Lines before the first change and behind the last
    /// one end as they did. Between these a line ends as the one in its place did, and lines beyond those as
    /// the line before them (in a text without any line end: '\n'). A U+2028 becomes a line end unless the text
    /// had one before: editors insert it for Shift+Return. What no text file holds (NUL, half a surrogate pair)
    /// becomes U+FFFD.
    std::string ToBytes(std::u16string_view editorText) const;

private:
    std::string mBytes;
};

}  // namespace desk
