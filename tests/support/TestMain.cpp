#include <gtest/gtest.h>

#include <QApplication>
#include <cstdio>
#include <cstring>

#include "desk/core/log/Log.h"
#include "tests/support/LogExpectation.h"

namespace {

/// What the item-model tester finds wrong, and what Qt calls critical, fails the test like an error of ours.
void TakeQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    const bool isModelTester = context.category && std::strncmp(context.category, "qt.modeltest", 12) == 0;
    if (type == QtCriticalMsg || (isModelTester && type != QtDebugMsg && type != QtInfoMsg))
        desk::Log(desk::LogLevel::Error, "Qt: " + message.toStdString());
    else
        std::fprintf(stderr, "Qt: %s\n", qPrintable(message));
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // The same on every machine; QT_QPA_PLATFORM=xcb shows the windows.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    qunsetenv("LANGUAGE");
    qInstallMessageHandler(TakeQtMessage);
    QApplication application(argc, argv);
    WatchLogOfTests();
    return RUN_ALL_TESTS();
}
