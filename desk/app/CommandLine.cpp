#include "desk/app/CommandLine.h"

#include <QCommandLineParser>
#include <QRegularExpression>
#include <memory>

#include "desk/core/names/QtStrings.h"

namespace desk {
namespace {

QString Text(const char* text) {
    return QString::fromLatin1(text);
}

std::unique_ptr<QCommandLineParser> MakeParser() {
    auto parser = std::make_unique<QCommandLineParser>();
    parser->setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser->setApplicationDescription(
        Text("Shows a production's folders and projects, and who works on what."));
    parser->addPositionalArgument(
        Text("FOLDER"), Text("The production's folder; without it the last production."), Text("[FOLDER]"));
    const auto add = [&](const char* name, const char* description, const char* value = nullptr) {
        parser->addOption({Text(name), Text(description), value ? Text(value) : QString()});
    };
    add("open", "Open this project; can be given several times.", "FILE.zuproj");
    add("screenshot", "Write a picture of the window with the production's rows, and end. Needs no display.",
        "FILE.png");
    add("user", "Work under this name instead of the system's.", "NAME");
    add("profile", "Keep settings, the log, sessions and the unsaved text of projects in this folder.", "DIR");
    add("plugin-dir", "Look for panels here first; can be given several times.", "DIR");
    add("list-plugins", "Tell which panels were found, which were refused and why, and end.");
    add("language", "The language of menus and panels, such as en or de.", "TAG");
    add("theme", "The look: dark, light or system (the default).", "THEME");
    add("window-size", "The size of the window, such as 1440x820.", "WxH");
    parser->addOption({{Text("h"), Text("help")}, Text("Show this help, and end.")});
    parser->addOption({{Text("v"), Text("version")}, Text("Show the version, and end.")});
    return parser;
}

/// Takes options apart, one error at a time: the first one stays.
class Reader {
public:
    Reader(const QCommandLineParser& parser, CommandLine& result) : mParser(parser), mResult(result) {}

    void Fail(const QString& error) {
        if (mResult.mError.isEmpty()) mResult.mError = error;
    }

    /// The last value given; an empty value is an error.
    QString Value(const char* name) {
        const QStringList values = mParser.values(Text(name));
        if (!values.isEmpty() && values.last().isEmpty()) Fail(Text("--%1 needs a value").arg(Text(name)));
        return values.isEmpty() ? QString() : values.last();
    }

    void ReadTheme() {
        const QString theme = Value("theme");
        if (theme == Text("dark"))
            mResult.mTheme = CommandLine::ThemeChoice::Dark;
        else if (theme == Text("light"))
            mResult.mTheme = CommandLine::ThemeChoice::Light;
        else if (!theme.isEmpty() && theme != Text("system"))
            Fail(Text("unknown theme \"%1\": it is dark, light or system").arg(theme));
    }

    void ReadWindowSize() {
        const QString size = Value("window-size");
        if (size.isEmpty()) return;
        static const QRegularExpression pattern(Text("^([0-9]{3,4})x([0-9]{3,4})$"));
        const auto match = pattern.match(size);
        if (!match.hasMatch()) return Fail(Text("window size \"%1\" is not of the form 1440x820").arg(size));
        mResult.mWindowSize = QSize(match.captured(1).toInt(), match.captured(2).toInt());
    }

    void ReadFolders() {
        mResult.mScreenshot = ToUTF8(Value("screenshot"));
        mResult.mProfile = ToUTF8(Value("profile"));
        Value("plugin-dir");
        Value("open");
        for (const QString& project : mParser.values(Text("open")))
            mResult.mProjects.push_back(ToUTF8(project));
        for (const QString& folder : mParser.values(Text("plugin-dir")))
            mResult.mPluginFolders.push_back(ToUTF8(folder));
        const QStringList folders = mParser.positionalArguments();
        if (folders.size() > 1)
            Fail(Text("one production folder can be opened, not %1").arg(folders.size()));
        else if (!folders.isEmpty() && folders.first().isEmpty())
            Fail(Text("the production folder's name is empty"));
        else if (!folders.isEmpty())
            mResult.mFolder = ToUTF8(folders.first());
    }

private:
    const QCommandLineParser& mParser;
    CommandLine& mResult;
};

CommandLine::Action ReadAction(const QCommandLineParser& parser) {
    if (parser.isSet(Text("help"))) return CommandLine::Action::ShowHelp;
    if (parser.isSet(Text("version"))) return CommandLine::Action::ShowVersion;
    if (parser.isSet(Text("list-plugins"))) return CommandLine::Action::ListPlugins;
    return CommandLine::Action::Run;
}

}  // namespace

CommandLine ParseCommandLine(const QStringList& arguments) {
    CommandLine result;
    const auto parser = MakeParser();
    Reader reader(*parser, result);
    if (!parser->parse(QStringList(Text("production-desk")) + arguments)) {
        QString error = parser->errorText();
        if (error.endsWith(QLatin1Char('.'))) error.chop(1);
        reader.Fail(error.left(1).toLower() + error.mid(1));
        return result;
    }
    result.mAction = ReadAction(*parser);
    result.mUser = reader.Value("user");
    result.mLanguage = reader.Value("language");
    reader.ReadTheme();
    reader.ReadWindowSize();
    reader.ReadFolders();
    return result;
}

QString CommandLineHelp() {
    return MakeParser()->helpText();
}

}  // namespace desk
