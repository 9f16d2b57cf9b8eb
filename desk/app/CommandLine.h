#pragma once

#include <QSize>
#include <QString>
#include <QStringList>
#include <string>
#include <vector>

namespace desk {

/// What the user asked for on the command line. Paths are bytes, as they were given.
struct CommandLine {
    enum class Action { Run, ShowHelp, ShowVersion, ListPlugins };
    enum class ThemeChoice { System, Dark, Light };

    Action mAction = Action::Run;
    /// The production's folder; empty: the last one.
    std::string mFolder;
    /// Projects to open.
    std::vector<std::string> mProjects;
    /// The picture to write instead of running; empty: run.
    std::string mScreenshot;
    /// Empty: the system's.
    QString mUser;
    /// Empty: the user's own.
    std::string mProfile;
    std::vector<std::string> mPluginFolders;
    /// A language tag (RFC 5646); empty: the system's.
    QString mLanguage;
    ThemeChoice mTheme = ThemeChoice::System;
    /// The size of the main window; invalid: as it was.
    QSize mWindowSize;

    /// What is wrong, in one line; empty when nothing is. Nothing else counts then.
    QString mError;
};

/// Reads the program's arguments (without its name). Asks nothing of the disk. Needs no application object.
CommandLine ParseCommandLine(const QStringList& arguments);

/// The text of --help. Needs an application object for the program's name.
QString CommandLineHelp();

}  // namespace desk
