#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "desk/framework/PanelRegistry.h"
#include "host/framework/Handler.h"
#include "host/framework/Module.h"

namespace desk {

/// What libraries have registered. Made when it is first used, since libraries register while they are being
/// loaded; never destroyed, since handlers and modules may outlive every static. UI thread.
struct Registrations {
    static Registrations& Instance();

    template <class T>
    struct Factory {
        T mFactory;
        /// The library that registered it; what the factory is passed.
        host::UTF16String mLibraryPath;
    };
    struct WindowClass {
        host::UTF16String mHandlerID;
        bool mIsDockable;
    };

    /// The library that is being loaded.
    host::UTF16String mLoadingPath;
    std::map<host::UTF16String, Factory<host::Module::Factory>> mModuleFactories;
    std::map<host::UTF16String, Factory<host::Handler::Factory>> mHandlerFactories;
    std::map<host::UTF16String, std::unique_ptr<host::Module>> mModules;
    /// The handlers of panels that are closed at first.
    std::set<host::UTF16String> mOnDemand;

    std::map<host::UTF16String, host::Handler*> mLiveHandlers;
    std::map<host::UTF16String, std::unique_ptr<host::Handler>> mOwnedHandlers;

    std::map<host::UTF16String, WindowClass> mWindowClasses;
    std::vector<PanelRegistry::WindowEntry> mWindowEntries;
    /// The window IDs of `mWindowEntries`.
    std::vector<host::UTF16String> mWindowEntryIDs;
};

}  // namespace desk
