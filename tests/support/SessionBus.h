#pragma once

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <string>

/// A message bus of the test's own.
class SessionBus {
public:
    static bool IsPossible() {
#ifdef __SANITIZE_THREAD__
        return false;  // Once a QProcess has run, the sanitizer no longer sees what its thread locks.
#endif
        return !QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty();
    }

    /// `folder` is where the bus has its socket; `name` is the name of the test's connection to it.
    SessionBus(const std::string& folder, const QString& name)
        : mName(name), mSocket(QString::fromStdString(folder) + QStringLiteral("/bus")) {
        mBus.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                    QStringLiteral("--address"), Address()});
        QElapsedTimer time;
        for (time.start(); !mConnection.isConnected() && time.elapsed() < 20'000;)
            if (mBus.waitForReadyRead(20) || QFile::exists(mSocket))
                mConnection = QDBusConnection::connectToBus(Address(), mName);
    }
    ~SessionBus() {
        Leave();
        mBus.kill();
        mBus.waitForFinished();
    }

    QString Address() const {
        return QStringLiteral("unix:path=") + mSocket;
    }
    QDBusConnection& Connection() {
        return mConnection;
    }
    /// The test's connection goes away; the bus stays.
    void Leave() {
        if (mConnection.isConnected()) QDBusConnection::disconnectFromBus(mName);
        mConnection = QDBusConnection(QString());
    }

private:
    QString mName, mSocket;
    QProcess mBus;
    QDBusConnection mConnection{QString()};
};
