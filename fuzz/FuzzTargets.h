#pragma once

#include <string_view>

namespace fuzz {

/// Reads an input with one of the readers, and checks what they promise: whatever comes, they refuse it or make
/// something usable of it, which is the same after it has been written and read again. Throws
/// `std::logic_error` for a promise that is broken. `name` is that of a folder in tests/data/fuzz:
/// "panel-settings": the panel's settings file; with "t" as its first byte the rest is the file's text in
/// UTF-8, otherwise the rest is the file. "lock-record": a project's lock file.
void Read(std::string_view name, std::string_view input);

}  // namespace fuzz
