#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QStandardPaths>

#include "tests/ui/ProgramRun.h"

namespace {

/// A desktop portal that prefers light, in the form of the interface's version 1: a variant in a variant.
class LightPortal : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++mQuestions;
        const bool isUnderstood =
            message.interface() == QLatin1String("org.freedesktop.portal.Settings") &&
            message.member() == QLatin1String("Read") &&
            message.arguments() ==
                QVariantList{QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme")};
        const QVariant light = QVariant::fromValue(QDBusVariant(QVariant(uint(2))));
        connection.send(isUnderstood ? message.createReply(QVariant::fromValue(QDBusVariant(light)))
                                     : message.createErrorReply(QDBusError::UnknownMethod, QString()));
        return true;
    }
    int mQuestions = 0;
};

class ColorScheme : public ProgramRun {
protected:
    double PictureBrightness() {
        QProcess process;
        Start(process,
              {"--screenshot", mHome.Path("picture.png"), "--profile", mHome.Path("profile"), mHome.Path()});
        EXPECT_TRUE(WaitFor([&] {
            QCoreApplication::processEvents();
            return process.state() == QProcess::NotRunning;
        }));
        const QImage picture(QString::fromStdString(mHome.Path("picture.png")));
        return QColor(picture.pixel(5, picture.height() / 2)).lightnessF();
    }
};

TEST_F(ColorScheme, ComesFromTheDesktopsPortalAndIsDarkWithoutOne) {
    EXPECT_LT(PictureBrightness(), 0.3);

    if (QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty())
        GTEST_SKIP() << "there is no dbus-daemon to ask over";
    const QString address = QStringLiteral("unix:path=") + QString::fromStdString(mHome.Path("bus"));
    QProcess bus;
    bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
               QStringLiteral("--address"), address});
    ASSERT_TRUE(WaitFor([&] { return mHome.Exists("bus"); }));
    SetVariable("DBUS_SESSION_BUS_ADDRESS", address.toStdString());
    {
        LightPortal portal;
        QDBusConnection connection = QDBusConnection::connectToBus(address, QStringLiteral("portal"));
        ASSERT_TRUE(connection.isConnected());
        ASSERT_TRUE(
            connection.registerVirtualObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal));
        ASSERT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
        EXPECT_GT(PictureBrightness(), 0.7);
        EXPECT_EQ(portal.mQuestions, 1);
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    }
    EXPECT_LT(PictureBrightness(), 0.3) << "a bus without a portal";
    bus.kill();
    bus.waitForFinished();
}

}  // namespace
