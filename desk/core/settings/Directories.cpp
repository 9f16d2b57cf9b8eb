#include "desk/core/settings/Directories.h"

#include <map>
#include <string>

#include "host/core/DirectoryRegistry.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

using Directories = std::map<std::string, host::UTF16String, std::less<>>;

Directories& GetDirectories() {
    static Directories sDirectories;
    return sDirectories;
}

}  // namespace

void RegisterDirectory(std::string_view name, const host::UTF16String& folder) {
    GetDirectories()[std::string(name)] = host::PathUtils::AddTrailingSlash(folder);
}

}  // namespace desk

host::UTF16String host::DirectoryRegistry::FindDirectory(std::string_view name) {
    const desk::Directories& directories = desk::GetDirectories();
    const auto found = directories.find(name);
    return found == directories.end() ? UTF16String() : found->second;
}
