#pragma once

#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// The extension of project files, with its dot: ".zuproj".
ZUHOST_API const UTF16String& GetProjectFileExtension();

/// True when the name of `path` is a project file's: the project extension (ASCII letter case ignored)
/// behind at least one other character, no separator at the end, at most 255 bytes long on the disk.
/// Judges the name only: a folder can be called so too, and who knows what stands there asks that first. Where
/// only the path is handed on, a folder's has a separator at its end. Any thread.
ZUHOST_API bool IsVantorProjectFile(std::u16string_view path);

/// Natural order of names: runs of digits by their numeric value (of any length), the rest by the
/// order of the user's language, letter case ignored unless nothing else differs. Negative, zero or
/// positive. Equal only for equal strings. Any thread.
ZUHOST_API int CompareStringsIncludingNumericValues(const UTF16String& a, const UTF16String& b);

}  // namespace host
