#include <algorithm>
#include <iterator>
#include <string_view>

#include "desk/core/durable/VolumeProperties.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/work/AskVolume.h"
#include "host/core/FoldASCII.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

namespace host::PathUtils {

namespace {

/// NAME_MAX of Linux.
constexpr std::size_t kLongestName = 255;
constexpr std::u16string_view kWindowsCharacters = u"\\:*?\"<>|";
constexpr char16_t kWindowsCharactersDisplay[] = u"\\ : * ? \" < > |";

enum class NameFault {
    None,
    Empty,
    Reserved,
    IllegalCharacter,
    ControlCharacter,
    EndsInBlank,
    EndsInDot,
    Device,
    TooLong
};

/// Never throws: what the volume does not tell is no reason to refuse a name.
bool HasWindowsNames(const UTF16String& folder) {
    if (folder.empty()) return false;
    try {
        const auto title = ZString("$$$/Vantor/Desk/Files/Checking=Checking “@0”", {GetFullFilePart(folder)});
        return desk::AskVolume(title, "find the volume of", folder, [bytes = UTF16to8(folder)] {
            return desk::HasWindowsNames(desk::GetServices().mFileSystem->VolumeType(bytes));
        });
    } catch (const std::exception& exception) {
        desk::Log(desk::LogLevel::Warning, exception.what());
        return false;
    }
}

bool IsControl(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

/// The bytes that such a unit stands for would not come back as it.
bool HasUnknownUnit(const UTF16String& name) {
    return UTF8to16(UTF16to8(name)) != name;
}

bool IsBlank(char16_t unit) {
    return unit == u' ' || unit == u'\u00A0' || unit == u'\u3000';
}

/// The names of devices, which Windows takes for the device with any extension too.
bool IsDevice(const UTF16String& name) {
    static constexpr std::u16string_view kDevices[] = {u"con", u"prn", u"aux", u"nul"};
    UTF16String stem = name.substr(0, name.find(u'.'));
    std::ranges::transform(stem, stem.begin(), FoldASCII<char16_t>);
    const std::u16string_view port = std::u16string_view(stem).substr(0, 3);
    const bool isPort =
        stem.size() == 4 && (port == u"com" || port == u"lpt") && stem[3] >= u'1' && stem[3] <= u'9';
    return isPort || std::ranges::find(kDevices, stem) != std::end(kDevices);
}

std::size_t CountBytes(const UTF16String& name) {
    return UTF16to8(name).size();
}

/// However long the name is.
bool HasProjectExtension(const UTF16String& name) {
    return HasEndingFoldingASCII(name, GetProjectFileExtension());
}

std::size_t LongestName(const UTF16String& name) {
    return HasProjectExtension(name) ? kLongestName - desk::GetLockFileName({}).size() : kLongestName;
}

UTF16String DescribeTooLong(const UTF16String& name) {
    const auto bytes = NumberToString(static_cast<long long>(CountBytes(name)));
    const auto possible = NumberToString(static_cast<long long>(LongestName(name)));
    if (!HasProjectExtension(name))
        return ZString(
            "$$$/Desk/FileNames/TooLong=The name is too long: it has @0 letters, and @1 are possible. Accented letters "
            "count as two, those of most other scripts as three.",
            {bytes, possible});
    return ZString(
        "$$$/Desk/FileNames/TooLongProject=The name is too long: with “@0” at its end it has @1 letters, and a "
        "project’s may have @2. Accented letters count as two, those of most other scripts as three.",
        {GetProjectFileExtension(), bytes, possible});
}

NameFault FindFault(const UTF16String& name) {
    if (name.empty()) return NameFault::Empty;
    const std::string bytes = UTF16to8(name);
    if (name == u"." || name == u".." || desk::MayBeLeftover(bytes) || bytes == desk::kTrashRecordsName)
        return NameFault::Reserved;
    if (name.find(GetPathSeparator()) != UTF16String::npos || HasUnknownUnit(name))
        return NameFault::IllegalCharacter;
    if (std::ranges::any_of(name, IsControl)) return NameFault::ControlCharacter;
    if (IsBlank(name.back())) return NameFault::EndsInBlank;
    return CountBytes(name) > LongestName(name) ? NameFault::TooLong : NameFault::None;
}

NameFault FindWindowsFault(const UTF16String& name) {
    if (name.find_first_of(kWindowsCharacters) != UTF16String::npos) return NameFault::IllegalCharacter;
    if (name.back() == u'.') return NameFault::EndsInDot;
    return IsDevice(name) ? NameFault::Device : NameFault::None;
}

NameFault FindFault(const UTF16String& name, const UTF16String& folder) {
    const NameFault fault = FindFault(name);
    if (fault != NameFault::None || FindWindowsFault(name) == NameFault::None) return fault;
    return HasWindowsNames(folder) ? FindWindowsFault(name) : NameFault::None;
}

}  // namespace

bool IsValidFileName(const UTF16String& name, const UTF16String& folder) {
    return FindFault(name, folder) == NameFault::None;
}

UTF16String DescribeInvalidFileName(const UTF16String& name, const UTF16String& folder) {
    switch (FindFault(name, folder)) {
        case NameFault::None:
            break;
        case NameFault::Empty:
            return ZString("$$$/Desk/FileNames/Empty=The name is empty.");
        case NameFault::Reserved:
            return ZString("$$$/Desk/FileNames/Reserved=The name is kept for files of the program.");
        case NameFault::IllegalCharacter:
            return ZString(
                "$$$/Desk/FileNames/IllegalCharacter=The name has a character that this volume cannot "
                "hold.");
        case NameFault::ControlCharacter:
            return ZString(
                "$$$/Desk/FileNames/ControlCharacter=The name has a line break or another character "
                "that cannot be seen.");
        case NameFault::EndsInBlank:
            return ZString("$$$/Desk/FileNames/EndsInBlank=The name ends in a blank.");
        case NameFault::EndsInDot:
            return ZString(
                "$$$/Desk/FileNames/EndsInDot=The name ends in a dot, which this volume cannot hold.");
        case NameFault::Device:
            return ZString(
                "$$$/Desk/FileNames/Device=The name is a device’s on Windows, which uses this kind of "
                "volume.");
        case NameFault::TooLong:
            return DescribeTooLong(name);
    }
    return {};
}

UTF16String GetIllegalPathCharactersDisplay(const UTF16String& folder) {
    UTF16String characters = kIllegalPathCharactersDisplay;
    if (HasWindowsNames(folder)) characters.append(u" ").append(kWindowsCharactersDisplay);
    return characters;
}

}  // namespace host::PathUtils
