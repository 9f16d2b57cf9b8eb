#include "desk/core/names/UniqueNames.h"

#include <algorithm>
#include <string>

#include "desk/core/edges/FileSystem.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

constexpr std::size_t kLongestName = 255;
/// The lock's name has six bytes more.
constexpr std::size_t kLongestProjectName = 249;

/// Takes the last character away.
void Shorten(host::UTF16String& text) {
    const auto isHigh = [](char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; };
    const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
    const bool isPair = text.size() > 1 && isLow(text.back()) && isHigh(text[text.size() - 2]);
    text.resize(text.size() - (isPair ? 2 : 1));
}

/// The number at the end of a name, behind a blank; 0 when there is none above 1.
int TakeNumber(std::u16string_view& name) {
    constexpr std::size_t kMostDigits = 6;
    const std::size_t begin = name.find_last_not_of(u"0123456789") + 1;
    const std::size_t digits = name.size() - begin;
    if (begin < 2 || digits == 0 || digits > kMostDigits || name[begin - 1] != u' ' || name[begin] == u'0')
        return 0;
    const int number = std::stoi(host::UTF16to8(name.substr(begin)));
    if (number < 2) return 0;
    name.remove_suffix(digits + 1);
    return number;
}

/// Takes the word, and the number behind it, off the end of a copy's name; the number of the copy, 0 for what
/// is no copy.
int TakeCopyNumber(host::UTF16String& stem, const host::UTF16String& ending) {
    std::u16string_view rest = stem;
    const int number = TakeNumber(rest);
    if (rest.size() <= ending.size() || !rest.ends_with(ending)) return 0;
    stem.resize(rest.size() - ending.size());
    return std::max(number, 1);
}

NameParts PartsOf(const host::UTF16String& path) {
    const host::UTF16String name = host::PathUtils::GetFullFilePart(host::PathUtils::RemoveTrailingSlash(path));
    return path.ends_with(host::PathUtils::GetPathSeparator()) ? NameParts{name, {}} : SplitName(name);
}

host::UTF16String FolderPartOf(const host::UTF16String& path) {
    return host::PathUtils::GetFullDirectoryPart(host::PathUtils::RemoveTrailingSlash(path));
}

/// See `MakeUniquePath`.
host::UTF16String MakeUnique(const host::UTF16String& folder, const NameParts& parts, int startNumber,
                             const host::UTF16String& separator,
                             const std::function<bool(const host::UTF16String&)>& isTaken) {
    for (long long number = startNumber;; ++number) {
        host::UTF16String unique = folder + MakeName(parts, separator + host::NumberToString(number));
        if (!isTaken(unique)) return unique;
    }
}

}  // namespace

NameParts SplitName(std::u16string_view name) {
    const std::size_t length = host::GetProjectFileExtension().size();
    // Judged by its end: the whole may be too long for a project's name.
    const bool isProject =
        name.size() > length &&
        host::IsVantorProjectFile(u'x' + host::UTF16String(name.substr(name.size() - length)));
    const std::size_t end = isProject ? name.size() - length : name.size();
    return {host::UTF16String(name.substr(0, end)), host::UTF16String(name.substr(end))};
}

host::UTF16String MakeName(const NameParts& parts, const host::UTF16String& suffix) {
    const std::size_t longest = parts.mExtension.empty() ? kLongestName : kLongestProjectName;
    const host::UTF16String rest = suffix + parts.mExtension;
    host::UTF16String stem = parts.mStem;
    while (!stem.empty() && host::UTF16to8(stem + rest).size() > longest) Shorten(stem);
    return stem + rest;
}

bool IsTaken(FileSystem& fileSystem, const host::UTF16String& path) {
    try {
        fileSystem.Status(host::UTF16to8(path), false);
        return true;
    } catch (const host::FileException&) {
        return false;
    }
}

host::UTF16String MakeUniquePath(const host::UTF16String& path, int startNumber,
                                 const host::UTF16String& separator,
                                 const std::function<bool(const host::UTF16String&)>& isTaken) {
    return MakeUnique(FolderPartOf(path), PartsOf(path), startNumber, separator, isTaken);
}

host::UTF16String MakeCopyPath(const host::UTF16String& path, const host::UTF16String& word,
                               const std::function<bool(const host::UTF16String&)>& isTaken) {
    const host::UTF16String folder = FolderPartOf(path);
    NameParts parts = PartsOf(path);
    const host::UTF16String ending = u' ' + word;
    const int number = TakeCopyNumber(parts.mStem, ending);
    if (number == 0) {
        host::UTF16String first = folder + MakeName(parts, ending);
        if (!isTaken(first)) return first;
    }
    return MakeUnique(folder, parts, std::max(number, 1) + 1, ending + u' ', isTaken);
}

}  // namespace desk
