#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/framework/CommandHandler.h"

namespace host {

class TabView;
class WorkspaceFrame;

/// Makes the view of a panel. UI thread.
class ZUHOST_API TabViewCreator {
public:
    virtual ~TabViewCreator();

    /// Makes the panel's view in `frame`. The handler keeps the view alive until it is destroyed or
    /// asked again.
    virtual TabView* CreateTabViewSelf(WorkspaceFrame* frame) = 0;

    /// True when closing the panel destroys the handler with its views; false when it is only hidden.
    /// The base answers false.
    virtual bool ShouldDestroyWhenClosed() const;
};

/// A panel as the host sees it: made when the panel is first wanted, owned by the host. UI thread.
class ZUHOST_API Handler : public CommandHandler, public TabViewCreator {
public:
    /// `path` is what the host passed to the factory.
    Handler(const UTF16String& path, const UTF16String& handlerID);
    ~Handler() override;

    const UTF16String& GetHandlerID() const { return mHandlerID; }

    /// The shortcut context of the panel; the base has none (empty). Static storage.
    virtual const char* GetContextName() const;
    /// The ID of the panel's flyout menu; the base has none (null). Static storage.
    virtual const char* GetFlyoutMenuID() const;
    /// False keeps the panel open when the user closes it. The base answers true.
    virtual bool AllowClose();
    /// Puts the cursor into the search field of the panel's view; false when it has none or it cannot be
    /// used now.
    virtual bool OnSelectFindBox();
    /// Puts the next or the previous panel of the window on duty; false when there is no other.
    virtual bool OnSelectNextPanel();
    virtual bool OnSelectPreviousPanel();

    using Factory = Handler* (*)(const UTF16String& handlerPath);

    /// Registers the factory of a handler; called by the library's static initialisation. Returns true,
    /// so that it can initialise a static.
    static bool RegisterFactory(const UTF16String& handlerID, Factory factory);

    /// The live handler of that ID, or null.
    static Handler* FindHandler(const UTF16String& handlerID);

private:
    UTF16String mHandlerID;
};

}  // namespace host
