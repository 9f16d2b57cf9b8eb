#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// A plug-in library as the host sees it: made once when the library is loaded, owned by the host.
class ZUHOST_API Module {
public:
    /// `path` is the library's file.
    explicit Module(const UTF16String& path);
    virtual ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    const UTF16String& GetPath() const { return mPath; }

    using Factory = Module* (*)(const UTF16String& modulePath);

    /// Registers the factory of a module; called by the library's static initialisation. The host calls
    /// the factory once the library is loaded. Returns true, so that it can initialise a static.
    static bool RegisterFactory(const UTF16String& moduleID, Factory factory);

private:
    UTF16String mPath;
};

}  // namespace host
