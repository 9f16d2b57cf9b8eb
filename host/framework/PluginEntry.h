#pragma once

#include <cstdint>

#include "host/framework/Identifiers.h"

/// The entry record of a plug-in: an ELF note (System V gABI, "Note Section") in section
/// ".note.zuhost.plugin", owner "ZuHost", type 1, that the host reads before it loads the file, so that
/// nothing of a foreign plug-in runs. Its description is the SDK version (32 bits) and the plug-in's name
/// (UTF-8, zero-terminated, 60 bytes).
namespace host {

inline constexpr char kPluginNoteSection[] = ".note.zuhost.plugin";
inline constexpr char kPluginNoteOwner[] = "ZuHost";
inline constexpr std::uint32_t kPluginNoteType = 1;

struct PluginNote {
    std::uint32_t mOwnerSize;
    std::uint32_t mDescriptionSize;
    std::uint32_t mType;
    char mOwner[8];
    std::uint32_t mSdkVersion;
    char mName[60];
};
static_assert(sizeof(PluginNote) == 84);

}  // namespace host

/// Puts the entry record into a plug-in; stands once, at namespace scope, in one source file of it.
#define ZUHOST_PLUGIN_ENTRY(name)                                                                        \
    extern "C"                                                                                           \
        __attribute__((used, retain, visibility("default"), section(".note.zuhost.plugin"), aligned(4))) \
        const ::host::PluginNote zuhostPluginNote = {sizeof(::host::kPluginNoteOwner),                   \
                                                     sizeof(::host::PluginNote) - 20,                    \
                                                     ::host::kPluginNoteType,                            \
                                                     "ZuHost",                                           \
                                                     ::host::kSdkVersion,                                \
                                                     name}
