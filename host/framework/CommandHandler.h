#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// A command on its way to whoever carries it out.
class Command {
public:
    explicit Command(int id) : mID(id) {}
    int GetID() const { return mID; }

private:
    int mID;
};

/// How a menu marks a command.
enum class MenuMark { None, Check, Bullet };

/// Somebody who can be asked to carry out commands. UI thread.
class ZUHOST_API CommandHandler {
public:
    /// `parent` (not owned, may be null) is asked for what this handler does not decide.
    explicit CommandHandler(CommandHandler* parent);
    virtual ~CommandHandler();
    CommandHandler(const CommandHandler&) = delete;
    CommandHandler& operator=(const CommandHandler&) = delete;

    /// Tells whether the command `id` can be carried out now. Returns false, and changes nothing, when
    /// nobody here decides; otherwise sets all but `text`, which comes in empty and stays so where the menu's
    /// own text stands: it is set only while the command is enabled, by one whose menu text depends on the
    /// state. The base asks the parent. Called often: must not wait for a volume.
    virtual bool FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark, UTF16String& text);

    /// Why the command `id`, whose status is disabled, cannot be carried out now: a sentence for people,
    /// localised, that the status bar shows beside the grey entry. Empty when nobody here knows. The base asks
    /// the parent. Called when a menu opens: must not wait for a volume.
    virtual UTF16String DescribeWhyDisabled(int id);

    /// Carries out a command. Returns false when nobody here does. The base asks the parent.
    virtual bool ObeyCommand(const Command& command);

    CommandHandler* GetParentCommander() const { return mParent; }

private:
    CommandHandler* mParent;
};

/// A command handler that stands in the chain from the focused view up to the application.
using Commander = CommandHandler;

/// Sends the command `id` to the commander on duty later, after what is already queued; with
/// `onlyIfEnabled`, only if its status is then enabled. UI thread.
ZUHOST_API void PostCommand(int id, bool onlyIfEnabled);

}  // namespace host
