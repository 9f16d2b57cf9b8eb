#include "desk/app/SystemColorScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPointer>
#include <chrono>
#include <future>
#include <memory>
#include <optional>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {
namespace {

constexpr QLatin1String kService("org.freedesktop.portal.Desktop");
constexpr QLatin1String kPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String kInterface("org.freedesktop.portal.Settings");
constexpr QLatin1String kNamespace("org.freedesktop.appearance");
constexpr QLatin1String kKey("color-scheme");
constexpr std::chrono::milliseconds kPortalPatience(500);
constexpr int kAnswerLimit = 5'000;

/// The value inside however many variants the portal's version wraps it in.
uint Unwrap(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

ThemeKind ToThemeKind(uint scheme) {
    return scheme == 2 ? ThemeKind::Light : ThemeKind::Dark;
}

/// Nothing when there is no portal. Waits for the bus.
std::optional<ThemeKind> AskPortal() {
    QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, QLatin1String("Read"));
    question << QString(kNamespace) << QString(kKey);
    const QDBusMessage answer = QDBusConnection::sessionBus().call(question, QDBus::Block, kAnswerLimit);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return {};
    return ToThemeKind(Unwrap(answer.arguments().first()));
}

}  // namespace

SystemColorScheme::SystemColorScheme(Changed changed) {
    auto promise = std::make_shared<std::promise<std::optional<ThemeKind>>>();
    std::future<std::optional<ThemeKind>> answer = promise->get_future();
    GetServices().mWorkerPool->Submit([promise, self = QPointer<SystemColorScheme>(this)] {
        const std::optional<ThemeKind> kind = AskPortal();
        promise->set_value(kind);
        GetServices().mMainThread->Post([self, kind] {
            if (!self || !kind) return;
            self->Set(*kind);
            self->Follow();
        });
    });
    if (answer.wait_for(kPortalPatience) == std::future_status::ready)
        mCurrent = answer.get().value_or(ThemeKind::Dark);
    mChanged = std::move(changed);
}

void SystemColorScheme::Follow() {
    QDBusConnection::sessionBus().connect(kService, kPath, kInterface, QLatin1String("SettingChanged"), this,
                                          SLOT(SettingChanged(QString, QString, QDBusVariant)));
}

void SystemColorScheme::SettingChanged(const QString& space, const QString& key, const QDBusVariant& value) {
    if (space == kNamespace && key == kKey) Set(ToThemeKind(Unwrap(QVariant::fromValue(value))));
}

void SystemColorScheme::Set(ThemeKind kind) {
    if (mCurrent == kind) return;
    mCurrent = kind;
    mChanged(kind);
}

}  // namespace desk
