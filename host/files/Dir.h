#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// A folder on the disk, which need not exist. Events go on being handled while one waits for the volume,
/// though no input. UI thread.
class ZUHOST_API Dir {
public:
    explicit Dir(UTF16String path) : mPath(std::move(path)) {}

    const UTF16String& FullPath() const { return mPath; }

    /// True when a folder stands there (a symbolic link to one counts). Asks the disk, never what was last
    /// heard of it. Throws `FileException` (ECANCELED) when the user does not want to wait for the volume.
    bool Exists() const;

    /// Makes the folder, in a parent that exists. Throws `FileException`, with EEXIST when anything stands
    /// there. May wait for the volume.
    void Create() const;

private:
    UTF16String mPath;
};

}  // namespace host
