#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace desk {

struct CommandLine;
class FileSystem;

/// What is said when there is no display.
inline constexpr char kNoDisplay[] =
    "there is no display to open a window on; --screenshot FILE.png writes a picture of it instead";

/// One run of the program with its window, from the services to the last saved setting. UI thread.
class Session {
public:
    /// Runs until the user quits; returns the process's exit code. Does not return, but ends the process, when
    /// a worker hangs on a volume that does not answer. `fileSystem` is never destroyed.
    static int Run(const CommandLine& commandLine, FileSystem& fileSystem, int argumentCount, char** arguments);

private:
    struct Parts;
    Session(const CommandLine& commandLine, FileSystem& fileSystem);
    ~Session();
    int Execute();

    void OpenProfile();
    void LoadPanels();
    void ApplyTheme();
    void OpenWindow();
    void OpenFirstProduction();
    void OpenProjects();
    void TakeScreenshot();
    void Close(std::chrono::steady_clock::time_point end);

    const CommandLine& mCommandLine;
    std::unique_ptr<Parts> mParts;
};

}  // namespace desk
