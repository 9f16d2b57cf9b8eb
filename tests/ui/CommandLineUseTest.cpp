
#include "tests/ui/ProgramRun.h"

namespace {

using CommandLineUse = ProgramRun;

TEST_F(CommandLineUse, AnswersWithoutADisplay) {
    const Result help = Run({"--help"});
    EXPECT_EQ(help.mExitCode, 0);
    EXPECT_NE(help.mOutput.find("--screenshot"), std::string::npos);
    EXPECT_NE(help.mOutput.find("[FOLDER]"), std::string::npos);
    EXPECT_EQ(help.mErrors, "");
    const Result version = Run({"--version"});
    EXPECT_EQ(version.mExitCode, 0);
    EXPECT_TRUE(version.mOutput.starts_with("Production Desk ")) << version.mOutput;
    EXPECT_FALSE(mHome.Exists("config")) << "asking must not write";
}

TEST_F(CommandLineUse, RefusesWrongUseWithOneLine) {
    mHome.Write("a-file");
    const struct {
        Arguments mArguments;
        const char* mNamed;
    } cases[] = {{{"--no-such-option"}, "no-such-option"},
                 {{"no-such-folder"}, "no-such-folder"},
                 {{"--screenshot", "p.png", "a-file"}, "a-file"},
                 {{"--screenshot", "p.png", "--plugin-dir", "no-plugins", "."}, "no-plugins"},
                 {{"--list-plugins", "--plugin-dir", "no-plugins"}, "no-plugins"}};
    for (const auto& c : cases) {
        const Result result = Run(c.mArguments);
        EXPECT_EQ(result.mExitCode, 2) << c.mNamed;
        EXPECT_EQ(CountLines(result.mErrors), 1) << result.mErrors;
        EXPECT_NE(result.mErrors.find(c.mNamed), std::string::npos) << result.mErrors;
        EXPECT_EQ(result.mOutput, "");
    }
    EXPECT_FALSE(mHome.Exists("config") || mHome.Exists("p.png"));
}

TEST_F(CommandLineUse, TheProgramAndItsScriptBeforeItBuildsSayHowToGetAPictureWithoutADisplay) {
    // A copy that finds nothing to build.
    std::filesystem::copy_file(ZU_SOURCE_DIR "/run.sh", mHome.Path("run.sh"));
    const auto runScript = [&](const std::string& argument) {
        QProcess process;
        process.setProcessEnvironment(mEnvironment);
        process.start(QStringLiteral("bash"),
                      {QString::fromStdString(mHome.Path("run.sh")), QString::fromStdString(argument)});
        return Finish(process);
    };
    for (const char* display : {":9731", ""}) {
        SetVariable("DISPLAY", display);
        const Result program = Run({mHome.Path()}), script = runScript(mHome.Path());
        EXPECT_EQ(program.mExitCode, 2);
        EXPECT_EQ(CountLines(program.mErrors), 1) << program.mErrors;
        EXPECT_NE(program.mErrors.find("--screenshot FILE.png"), std::string::npos) << program.mErrors;
        EXPECT_EQ(script.mErrors == program.mErrors, display[0] == '\0') << script.mErrors;
    }
    EXPECT_EQ(runScript(mHome.Path()).mExitCode, 2);
    for (const char* option : {"--help", "--screenshot=p.png", "--list-plugins"})
        EXPECT_EQ(runScript(option).mErrors.find("no display"), std::string::npos) << option;
}

TEST_F(CommandLineUse, ListsThePanelsAndWhyOthersAreRefused) {
    mHome.MakeFolder("mine");
    std::filesystem::copy_file(ZU_BINARY_DIR "/lib/libzuhost.so", mHome.Path("mine/WithoutRecord.so"));
    SetVariable("ZUHOST_PLUGIN_PATH", mHome.Path("mine"));
    const Result result = Run({"--list-plugins"});
    EXPECT_EQ(result.mExitCode, 0);
    for (const std::string& line : {"refused: " + mHome.Path("mine/WithoutRecord.so: has no entry record"),
                                    std::string("Production (SDK version 1): ")})
        EXPECT_NE(result.mOutput.find(line), std::string::npos) << line << " in:\n" << result.mOutput;
}

}  // namespace
