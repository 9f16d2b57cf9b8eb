#pragma once

#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

/// The folders that the host has for its panels, by name.
namespace host::DirectoryRegistry {

/// The folder of the user's settings.
inline constexpr std::string_view kUserProfile = "user.profile";

/// The folder of a name, with a separator at its end; empty when there is none of that name, as while the
/// program remembers nothing. UI thread.
ZUHOST_API UTF16String FindDirectory(std::string_view name);

}  // namespace host::DirectoryRegistry
