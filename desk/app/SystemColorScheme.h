#pragma once

#include <QObject>
#include <functional>

#include "desk/toolkit/Theme.h"

class QDBusVariant;

namespace desk {

/// The colour scheme that the desktop wants, from its portal (xdg-desktop-portal, interface
/// org.freedesktop.portal.Settings: namespace "org.freedesktop.appearance", key "color-scheme"; 1 is dark, 2
/// light). Dark where there is no portal or no preference. UI thread.
class SystemColorScheme : public QObject {
    Q_OBJECT

public:
    using Changed = std::function<void(ThemeKind)>;

    /// Asks the portal on a worker and waits at most half a second for it; an answer that comes later, or
    /// another choice of the user, is told to `changed`.
    explicit SystemColorScheme(Changed changed);

    ThemeKind Current() const { return mCurrent; }

private:
    Q_SLOT void SettingChanged(const QString& space, const QString& key, const QDBusVariant& value);
    void Follow();
    void Set(ThemeKind kind);

    Changed mChanged;
    ThemeKind mCurrent = ThemeKind::Dark;
};

}  // namespace desk
