#include "host/project/ProjectFiles.h"

#include <algorithm>
#include <string_view>

#include "desk/core/names/NaturalOrder.h"
#include "host/core/FoldASCII.h"

namespace host {

namespace {

constexpr std::u16string_view kExtension = u".zuproj";
constexpr std::size_t kLongestName = 255;

/// The bytes of `name` on the disk.
std::size_t CountBytes(std::u16string_view name) {
    std::size_t bytes = 0;
    bool isBehindHalfOfPair = false;
    for (char16_t unit : name) {
        const bool isFirstHalf = unit >= 0xD800 && unit <= 0xDBFF;
        const bool isRawByte = unit >= 0xDC80 && unit <= 0xDCFF && !isBehindHalfOfPair;
        const bool isInPair = isFirstHalf || isBehindHalfOfPair;
        bytes += unit < 0x80 || isRawByte ? 1 : unit < 0x800 || isInPair ? 2 : 3;
        isBehindHalfOfPair = isFirstHalf;
    }
    return bytes;
}

}  // namespace

const UTF16String& GetProjectFileExtension() {
    static const UTF16String kProjectFileExtension(kExtension);
    return kProjectFileExtension;
}

bool IsVantorProjectFile(std::u16string_view path) {
    const std::u16string_view name = path.substr(path.rfind(u'/') + 1);
    if (!HasEndingFoldingASCII(name, kExtension)) return false;
    return name.size() * 3 <= kLongestName || CountBytes(name) <= kLongestName;
}

int CompareStringsIncludingNumericValues(const UTF16String& a, const UTF16String& b) {
    return desk::UserNaturalOrder().Compare(a, b);
}

}  // namespace host
