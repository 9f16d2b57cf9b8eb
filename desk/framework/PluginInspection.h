#pragma once

#include <optional>
#include <string>

#include "host/framework/PluginEntry.h"

namespace desk {

/// The entry record of an open file. Bounded reads of the ELF header, the program headers and the notes
/// (System V gABI); nothing of the file runs. Throws `std::runtime_error` with the reason when the file is no
/// library for this machine, or ends before what its headers name; empty when it is one without an entry
/// record.
std::optional<host::PluginNote> ReadPluginNote(int file);

}  // namespace desk
