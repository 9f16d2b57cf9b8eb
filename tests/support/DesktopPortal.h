#pragma once

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include "tests/support/SessionBus.h"

/// A message bus of its own with a desktop portal on it that prefers light, in the form of the interface's
/// version 1: a variant in a variant. The portal answers while the test handles Qt's events.
class DesktopPortal : public QDBusVirtualObject {
public:
    static bool IsPossible() { return SessionBus::IsPossible(); }

    /// `folder` is where the bus has its socket.
    explicit DesktopPortal(const std::string& folder) : mBus(folder, QStringLiteral("test portal")) {
        mIsThere = mBus.Connection().registerVirtualObject(kPath, this) &&
                   mBus.Connection().registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~DesktopPortal() override { Leave(); }

    QString Address() const { return mBus.Address(); }
    bool IsThere() const { return mIsThere; }

    /// The user chooses another scheme: 1 is dark, 2 light.
    void Choose(uint scheme) {
        QDBusMessage signal = QDBusMessage::createSignal(kPath, kInterface, QStringLiteral("SettingChanged"));
        signal << kNamespace << kKey << QVariant::fromValue(QDBusVariant(scheme));
        mBus.Connection().send(signal);
    }
    /// The portal goes away; the bus stays.
    void Leave() {
        mBus.Leave();
        mIsThere = false;
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const bool isUnderstood = message.interface() == kInterface &&
                                  message.member() == QLatin1String("Read") &&
                                  message.arguments() == QVariantList{kNamespace, kKey};
        const QVariant light = QVariant::fromValue(QDBusVariant(QVariant(uint(2))));
        connection.send(isUnderstood ? message.createReply(QVariant::fromValue(QDBusVariant(light)))
                                     : message.createErrorReply(QDBusError::UnknownMethod, QString()));
        return true;
    }

private:
    const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
    const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
    const QString kNamespace = QStringLiteral("org.freedesktop.appearance");
    const QString kKey = QStringLiteral("color-scheme");
    SessionBus mBus;
    bool mIsThere = false;
};
