#pragma once

#include <string>
#include <string_view>

#include "host/core/Strings.h"

namespace desk {

/// True when `path` is `folder` or lies below it; both normalised, in UTF-16 or in bytes. Any thread.
template <class Text>
bool IsSameOrBelow(const Text& path, const Text& folder) {
    if (folder.size() == 1 && folder.front() == '/') return !path.empty() && path.front() == '/';
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

/// The path of an entry of a folder; both in UTF-16 or in bytes. Any thread.
template <class Text>
Text JoinPath(const Text& folder, std::basic_string_view<typename Text::value_type> name) {
    Text path;
    path.reserve(folder.size() + 1 + name.size());
    path += folder;
    if (!path.ends_with('/')) path += '/';
    path += name;
    return path;
}

/// The path of the folder in which `path` (normalised) stands; empty when it names none. Any thread.
inline std::u16string_view FolderOf(std::u16string_view path) {
    const std::size_t slash = path.rfind(u'/');
    return slash == std::u16string_view::npos ? std::u16string_view() : path.substr(0, slash == 0 ? 1 : slash);
}

/// The same for a path of the disk, in bytes; "." when `path` names no folder.
inline std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// The last name of a path of the disk (bytes, normalised). Any thread.
inline std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// A folder's path for the UI thread and for the disk.
struct FolderPath {
    explicit FolderPath(const host::UTF16String& text) : mText(text), mBytes(host::UTF16to8(text)) {}

    host::UTF16String mText;
    std::string mBytes;
};

}  // namespace desk
