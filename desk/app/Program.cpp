#include "desk/app/Program.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "desk/app/CommandLine.h"
#include "desk/app/FolderCheck.h"
#include "desk/app/PluginFolders.h"
#include "desk/app/Session.h"
#include "desk/core/names/QtStrings.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/framework/PluginLoader.h"

namespace desk {
namespace {

constexpr int kWrongUse = 2;
constexpr std::chrono::seconds kCheckPatience(10);

void PrintError(const QString& text) {
    std::fprintf(stderr, "production-desk: %s\n", ToUTF8(text).c_str());
}

QStringList ReadArguments(int count, char** arguments) {
    QStringList result;
    for (int i = 1; i < count; ++i) result.append(ToQStringFromUTF8(arguments[i]));
    return result;
}

int ListPlugins(const CommandLine& commandLine, int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    for (const PluginFile& plugin : FindPlugins(GetPluginFolders(commandLine.mPluginFolders)))
        if (plugin.mRefusal.empty())
            std::printf("%s (SDK version %u): %s\n", plugin.mName.c_str(), plugin.mSdkVersion,
                        plugin.mPath.c_str());
        else
            std::printf("refused: %s: %s\n", plugin.mPath.c_str(), plugin.mRefusal.c_str());
    return EXIT_SUCCESS;
}

int ShowHelp(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    std::fputs(ToUTF8(CommandLineHelp()).c_str(), stdout);
    return EXIT_SUCCESS;
}

int ShowVersion() {
    std::puts("Production Desk " ZU_VERSION);
    return EXIT_SUCCESS;
}

/// Never destroyed: a thread that waits for a dead volume may still hold it.
FileSystem& Disk() {
    static FileSystem& disk = *new PosixFileSystem;
    return disk;
}

/// Makes the paths of the command line absolute; says which of its folders cannot be used.
QString CheckFolders(CommandLine& commandLine) {
    for (std::string& project : commandLine.mProjects) project = ToAbsolutePath(project);
    std::vector<std::string*> folders;
    if (!commandLine.mFolder.empty()) folders.push_back(&commandLine.mFolder);
    for (std::string& folder : commandLine.mPluginFolders) folders.push_back(&folder);
    for (std::string* folder : folders) {
        *folder = ToAbsolutePath(*folder);
        const QString problem = DescribeProblem(CheckFolderWithin(Disk(), *folder, kCheckPatience), *folder);
        if (!problem.isEmpty()) return problem;
    }
    return {};
}

bool IsSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value;
}

/// A picture needs no display, whatever the session is like; a window does.
bool PrepareDisplay(const CommandLine& commandLine) {
    if (IsSet("QT_QPA_PLATFORM")) return true;
    if (!commandLine.mScreenshot.empty()) return setenv("QT_QPA_PLATFORM", "offscreen", 1) == 0;
    return IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY");
}

int RunSession(const CommandLine& commandLine, int argumentCount, char** arguments) {
    if (!PrepareDisplay(commandLine)) {
        PrintError(QString::fromLatin1(kNoDisplay));
        return kWrongUse;
    }
    return Session::Run(commandLine, Disk(), argumentCount, arguments);
}

}  // namespace

int RunProgram(int argumentCount, char** arguments) {
    CommandLine commandLine = ParseCommandLine(ReadArguments(argumentCount, arguments));
    if (!commandLine.mError.isEmpty()) {
        PrintError(commandLine.mError + QStringLiteral(" (see --help)"));
        return kWrongUse;
    }
    using Action = CommandLine::Action;
    if (commandLine.mAction == Action::ShowVersion) return ShowVersion();
    if (commandLine.mAction == Action::ShowHelp) return ShowHelp(argumentCount, arguments);
    if (const QString problem = CheckFolders(commandLine); !problem.isEmpty()) {
        PrintError(problem);
        return kWrongUse;
    }
    return commandLine.mAction == Action::ListPlugins ? ListPlugins(commandLine, argumentCount, arguments)
                                                      : RunSession(commandLine, argumentCount, arguments);
}

}  // namespace desk
