#include "desk/framework/Shortcuts.h"

#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QShortcut>
#include <algorithm>

#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/HeldKey.h"
#include "desk/framework/ShortcutFiles.h"
#include "host/core/Localizer.h"
#include "host/framework/CommandIdentifiers.h"

namespace desk {

class Shortcuts::Context : public host::CommandContext {
public:
    Context(std::string_view name, host::UTF16String displayName)
        : mName(name), mDisplayName(std::move(displayName)) {}

    void DeclareCommand(std::string_view name, int id, host::CommandKind kind, std::string_view label,
                        const char*, bool) override {
        DeclaredCommand command{std::string(name), id, kind, host::Localizer::Get()->Localize(label)};
        const auto found = std::ranges::find(mCommands, command.mName, &DeclaredCommand::mName);
        if (found != mCommands.end())
            *found = std::move(command);
        else
            mCommands.push_back(std::move(command));
        Shortcuts::Instance().Refresh();
    }

    std::string mName;
    host::UTF16String mDisplayName;
    std::vector<DeclaredCommand> mCommands;
};

namespace {

constexpr char kGlobalContext[] = "global";

constexpr std::string_view kRepeating[] = {"cmd.projects.undo",
                                           "cmd.projects.redo",
                                           "cmd.zuproductionfolder.zoomin",
                                           "cmd.zuproductionfolder.zoomout",
                                           "cmd.zuproductionfolder.move.home",
                                           "cmd.zuproductionfolder.move.end",
                                           "cmd.zuproductionfolder.move.pageup",
                                           "cmd.zuproductionfolder.move.pagedown"};

bool IsRepeating(const DeclaredCommand& command) {
    return std::ranges::find(kRepeating, command.mName) != std::end(kRepeating);
}

/// Commands that no field keeps from the user, whatever is typed in it.
constexpr std::string_view kGoPastFields[] = {"cmd.file.quit"};

/// Lets keys past the widget that has the keyboard: it is not asked whether it wants them for itself.
class PassingKeys : public QObject {
public:
    using Test = std::function<bool(const QKeySequence&)>;

    PassingKeys(QObject* parent, Test passes) : QObject(parent), mPasses(std::move(passes)) {
        QCoreApplication::instance()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::ShortcutOverride) return false;
        if (!mPasses(QKeySequence(static_cast<QKeyEvent*>(event)->keyCombination()))) return false;
        event->ignore();
        return true;
    }

private:
    const Test mPasses;
};

void DeclareGlobalCommands(host::CommandContext& context) {
    const auto declare = [&context](std::string_view name, int id, std::string_view label) {
        context.DeclareCommand(name, id, host::CommandKind::LabelledCommand, label, nullptr, false);
    };
    declare("cmd.edit.find", host::CommandID::kFind, "$$$/Desk/Commands/Find=Find");
    declare("cmd.edit.selectall", host::CommandID::kSelectAll, "$$$/Desk/Commands/SelectAll=Select All");
    declare("cmd.edit.deselectall", host::CommandID::kDeselectAll,
            "$$$/Desk/Commands/DeselectAll=Deselect All");
    declare("cmd.file.closeallotherprojects", host::CommandID::kCloseAllOtherProjects,
            "$$$/Desk/Commands/CloseAllOtherProjects=Close All Other Projects");
    declare("cmd.window.nextpanel", host::CommandID::kNextPanel, "$$$/Desk/Commands/NextPanel=Next Panel");
    declare("cmd.window.previouspanel", host::CommandID::kPreviousPanel,
            "$$$/Desk/Commands/PreviousPanel=Previous Panel");
}

KeyBindings ReadDefaults() {
    KeyBindings bindings;
    for (const QFileInfo& info :
         QDir(QStringLiteral(":/shortcuts")).entryInfoList({QStringLiteral("*.json")})) {
        QFile file(info.filePath());
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        const JsonFile json = ParseJsonObject({text.constData(), static_cast<std::size_t>(text.size())});
        if (json.mState != JsonFile::State::Read)
            Log(LogLevel::Error, ToUTF8(info.filePath()) + ": " + json.mReason);
        ReadKeyBindings(json.mObject, ToUTF8(info.filePath()), bindings);
    }
    return bindings;
}

}  // namespace

Shortcuts::Shortcuts() = default;

Shortcuts::~Shortcuts() = default;

Shortcuts& Shortcuts::Instance() {
    // Not destroyed: contexts may be asked for until the end of the process.
    static Shortcuts* sInstance = nullptr;
    if (!sInstance) {
        sInstance = new Shortcuts;
        DeclareGlobalCommands(
            *sInstance->AddContext(kGlobalContext, host::ZString("$$$/Desk/Commands/Global=Application")));
    }
    return *sInstance;
}

void Shortcuts::Load(const std::string& profileFolder) {
    mDefaults = ReadDefaults();
    mOverrides.clear();
    mOverridesPath = profileFolder + "/shortcuts.json";
    const JsonFile json = ReadJsonFile(mOverridesPath);
    if (json.mState == JsonFile::State::Broken || json.mState == JsonFile::State::Unreadable)
        Log(LogLevel::Warning, mOverridesPath + " is left out: " + json.mReason);
    ReadKeyBindings(json.mObject, mOverridesPath, mOverrides);
    Refresh();
}

void Shortcuts::InstallOn(QWidget& mainWindow) {
    for (const auto& [key, shortcut] : mShortcuts) delete shortcut.data();
    mShortcuts.clear();
    mWindow = &mainWindow;
    delete mPassingKeys.data();
    delete mHeldKey.data();
    mPassingKeys =
        new PassingKeys(&mainWindow, [this](const QKeySequence& key) { return GoesPastFields(key); });
    // The filter that comes last hears of a key first.
    mHeldKey = new HeldKey(&mainWindow);
    LogUnknownNames();
    Refresh();
}

void Shortcuts::LogUnknownNames() const {
    for (const auto& [contextName, commands] : mOverrides) {
        const Context* context = FindContext(contextName);
        if (!context) {
            Log(LogLevel::Warning, mOverridesPath + ": there is no context \"" + contextName + '"');
            continue;
        }
        for (const auto& [name, keys] : commands)
            if (std::ranges::find(context->mCommands, name, &DeclaredCommand::mName) ==
                context->mCommands.end())
                Log(LogLevel::Warning,
                    mOverridesPath + ": \"" + contextName + "\" has no command \"" + name + '"');
    }
}

const std::vector<QKeySequence>* Shortcuts::FindKeys(const Context& context,
                                                     const DeclaredCommand& command) const {
    for (const KeyBindings* bindings : {&mOverrides, &mDefaults}) {
        const auto commands = bindings->find(context.mName);
        if (commands == bindings->end()) continue;
        const auto keys = commands->second.find(command.mName);
        if (keys != commands->second.end()) return &keys->second;
    }
    return nullptr;
}

const DeclaredCommand* Shortcuts::FindCommand(const Context& context, const QKeySequence& key) const {
    for (const DeclaredCommand& command : context.mCommands)
        if (const auto* keys = FindKeys(context, command); keys && std::ranges::find(*keys, key) != keys->end())
            return &command;
    return nullptr;
}

std::vector<const Shortcuts::Context*> Shortcuts::GetActiveContexts() const {
    std::vector<const Context*> contexts;
    if (mActive) contexts.push_back(mActive);
    const Context* global = FindContext(kGlobalContext);
    if (!mActive || (!mIsExclusive && mActive != global)) contexts.push_back(global);
    return contexts;
}

QKeySequence Shortcuts::GetKey(int commandID) const {
    std::vector<const Context*> contexts = GetActiveContexts();
    for (const auto& [name, context] : mContexts) contexts.push_back(context.get());
    for (const Context* context : contexts)
        for (const DeclaredCommand& command : context->mCommands)
            if (const auto* keys = FindKeys(*context, command);
                command.mID == commandID && keys && !keys->empty())
                return keys->front();
    return {};
}

void Shortcuts::Refresh() {
    if (!mWindow) return;
    for (const auto& [name, context] : mContexts)
        for (const DeclaredCommand& command : context->mCommands)
            if (const auto* keys = FindKeys(*context, command))
                for (const QKeySequence& key : *keys) mShortcuts.try_emplace(key);
    for (auto& [key, shortcut] : mShortcuts) {
        if (!shortcut) {
            shortcut = new QShortcut(key, mWindow.data());
            QObject::connect(shortcut, &QShortcut::activated, mWindow, [this, key = key] { Activate(key); });
        }
        shortcut->setEnabled(!FindActiveCommands(key).empty());
    }
}

std::vector<const DeclaredCommand*> Shortcuts::FindActiveCommands(const QKeySequence& key) const {
    std::vector<const DeclaredCommand*> commands;
    for (const Context* context : GetActiveContexts())
        if (const DeclaredCommand* command = FindCommand(*context, key)) commands.push_back(command);
    return commands;
}

bool Shortcuts::GoesPastFields(const QKeySequence& key) const {
    return std::ranges::any_of(FindActiveCommands(key), [](const DeclaredCommand* command) {
        return std::ranges::find(kGoPastFields, command->mName) != std::end(kGoPastFields);
    });
}

void Shortcuts::Activate(const QKeySequence& key) const {
    CommandRouter& router = CommandRouter::Instance();
    const bool isHeld = mHeldKey && mHeldKey->IsHeld();
    const std::vector<const DeclaredCommand*> commands = FindActiveCommands(key);
    for (const DeclaredCommand* command : commands) {
        if (!router.FindStatus(command->mID).mIsEnabled) continue;
        if (!isHeld || IsRepeating(*command)) router.Send(command->mID);
        return;
    }
    if (!isHeld) TellWhyDisabled(commands);
}

void Shortcuts::TellWhyDisabled(const std::vector<const DeclaredCommand*>& commands) {
    for (const DeclaredCommand* command : commands) {
        const host::UTF16String reason = CommandRouter::Instance().FindWhyDisabled(command->mID);
        if (!reason.empty()) return TellUser(reason);
    }
}

void Shortcuts::ResetContext() {
    mActive = nullptr;
    mIsExclusive = false;
    Refresh();
}

void Shortcuts::RegisterCommandContext(host::ShortcutManager::PopulateFunction populate) {
    if (std::ranges::find(mPopulated, populate) != mPopulated.end()) return;
    mPopulated.push_back(populate);
    populate(host::ShortcutManager::Instance());
}

host::CommandContext* Shortcuts::AddContext(std::string_view name, const host::UTF16String& displayName) {
    if (Context* context = FindContext(name)) return context;
    auto context = std::make_unique<Context>(name, displayName);
    return (mContexts[std::string(name)] = std::move(context)).get();
}

host::CommandContext* Shortcuts::GetContext(std::string_view name) const {
    return FindContext(name);
}

Shortcuts::Context* Shortcuts::FindContext(std::string_view name) const {
    const auto found = mContexts.find(name);
    return found == mContexts.end() ? nullptr : found->second.get();
}

void Shortcuts::ApplyContext(std::string_view name, bool exclusive) {
    const Context* context = FindContext(name);
    if (!context) return;
    mActive = context;
    mIsExclusive = exclusive;
    Refresh();
}

void Shortcuts::AddWindowMenuID(std::string_view context, const host::UTF16String& menuDisplayName,
                                std::string_view menuID) {
    if (!GetContext(context))
        Log(LogLevel::Warning, "A menu belongs to an unknown context: " + std::string(context));
    mMenuNames[std::string(menuID)] = menuDisplayName;
}

host::UTF16String Shortcuts::GetMenuDisplayName(std::string_view menuID) const {
    const auto found = mMenuNames.find(menuID);
    return found == mMenuNames.end() ? host::UTF16String() : found->second;
}

}  // namespace desk
