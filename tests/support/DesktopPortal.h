#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

/// A message bus of its own with a desktop portal on it that prefers light, in the form of the interface's
/// version 1: a variant in a variant. The portal answers while the test handles Qt's events.
class DesktopPortal : public QDBusVirtualObject {
public:
    static bool IsPossible() { return !QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty(); }

    /// `folder` is where the bus has its socket.
    explicit DesktopPortal(const std::string& folder)
        : mSocket(QString::fromStdString(folder) + QStringLiteral("/bus")) {
        mBus.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                   QStringLiteral("--nopidfile"), QStringLiteral("--address"),
                                                   Address()});
        QElapsedTimer time;
        for (time.start(); !mConnection.isConnected() && time.elapsed() < 20'000;)
            if (mBus.waitForReadyRead(20) || QFile::exists(mSocket))
                mConnection = QDBusConnection::connectToBus(Address(), Name());
        mIsThere = mConnection.registerVirtualObject(kPath, this) &&
                   mConnection.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~DesktopPortal() override {
        Leave();
        mBus.kill();
        mBus.waitForFinished();
    }

    QString Address() const { return QStringLiteral("unix:path=") + mSocket; }
    bool IsThere() const { return mIsThere; }
    int CountQuestions() const { return mQuestions; }

    /// The user chooses another scheme: 1 is dark, 2 light.
    void Choose(uint scheme) {
        QDBusMessage signal = QDBusMessage::createSignal(kPath, kInterface, QStringLiteral("SettingChanged"));
        signal << kNamespace << kKey << QVariant::fromValue(QDBusVariant(scheme));
        mConnection.send(signal);
    }
    /// The portal goes away; the bus stays.
    void Leave() {
        if (mIsThere) QDBusConnection::disconnectFromBus(Name());
        mConnection = QDBusConnection(QString());
        mIsThere = false;
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++mQuestions;
        const bool isUnderstood = message.interface() == kInterface && message.member() == QLatin1String("Read") &&
                                  message.arguments() == QVariantList{kNamespace, kKey};
        const QVariant light = QVariant::fromValue(QDBusVariant(QVariant(uint(2))));
        connection.send(isUnderstood ? message.createReply(QVariant::fromValue(QDBusVariant(light)))
                                     : message.createErrorReply(QDBusError::UnknownMethod, QString()));
        return true;
    }

private:
    static QString Name() { return QStringLiteral("test portal"); }

    const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
    const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
    const QString kNamespace = QStringLiteral("org.freedesktop.appearance");
    const QString kKey = QStringLiteral("color-scheme");
    QString mSocket;
    QProcess mBus;
    QDBusConnection mConnection{QString()};
    bool mIsThere = false;
    int mQuestions = 0;
};
