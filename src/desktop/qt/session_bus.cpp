#include "desktop/qt/session_bus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>
#include <cmath>
#include <utility>

namespace vento::desktop::qt {
namespace {

const auto kPortal = QStringLiteral("org.freedesktop.portal.Desktop");
const auto kPortalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto kSettings = QStringLiteral("org.freedesktop.portal.Settings");
const auto kAppearance = QStringLiteral("org.freedesktop.appearance");
const auto kContrastKey = QStringLiteral("contrast");
const auto kColourKey = QStringLiteral("color-scheme");
const auto kAccessibility = QStringLiteral("org.gnome.desktop.a11y.interface");
const auto kHighContrastKey = QStringLiteral("high-contrast");
const auto kInterface = QStringLiteral("org.gnome.desktop.interface");
const auto kThemeKey = QStringLiteral("gtk-theme");

void Send(const QVariantMap& properties) {
    QDBusMessage update =
        QDBusMessage::createSignal("/it/vento/vento", "com.canonical.Unity.LauncherEntry", "Update");
    update << QStringLiteral("application://vento.desktop") << properties;
    QDBusConnection::sessionBus().send(update);
}

}  // namespace

void Launcher::ShowProgress(float part) {
    const int percent = static_cast<int>(std::floor(part * 100));
    if (percent == percent_) return;
    percent_ = percent;
    Send({{"progress", percent / 100.0}, {"progress-visible", true}});
}

void Launcher::HideProgress(bool urgent) {
    percent_ = -1;
    Send({{"progress-visible", false}, {"urgent", urgent}});
}

ContrastWatch::ContrastWatch(std::function<void(Contrast)> changed)
    : changed_(std::move(changed)), theme_(qEnvironmentVariable("GTK_THEME")) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    // A change is asked for like the rest: an answer to an earlier question may still be on its way.
    bus.connect(kPortal, kPortalPath, kSettings, "SettingChanged", this, SLOT(Ask(QString, QString)));
    Ask(kAppearance, kContrastKey);
    Ask(kAppearance, kColourKey);
    Ask(kAccessibility, kHighContrastKey);
    if (theme_.isEmpty()) Ask(kInterface, kThemeKey);
}

Contrast ContrastWatch::Current() const {
    if (!appearance_ && !highContrast_ && !theme_.startsWith("HighContrast")) return Contrast::normal;
    const bool isDark = dark_ || theme_.contains("Inverse") || theme_.endsWith(":dark");
    return isDark ? Contrast::highOnDark : Contrast::highOnLight;
}

void ContrastWatch::Ask(const QString& space, const QString& key) {
    QDBusMessage question = QDBusMessage::createMethodCall(kPortal, kPortalPath, kSettings, "Read");
    question << space << key;
    auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, space, key, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        answer->deleteLater();
        if (!reply.isError()) Take(space, key, reply.value());
    });
}

void ContrastWatch::Take(const QString& space, const QString& key, const QDBusVariant& value) {
    QVariant plain = value.variant();
    if (plain.canConvert<QDBusVariant>())
        plain = plain.value<QDBusVariant>().variant();  // Read wraps it twice
    const Contrast before = Current();
    if (space == kAppearance && key == kContrastKey) appearance_ = plain.toUInt() == 1;
    if (space == kAppearance && key == kColourKey) dark_ = plain.toUInt() == 1;
    if (space == kAccessibility && key == kHighContrastKey) highContrast_ = plain.toBool();
    if (space == kInterface && key == kThemeKey) theme_ = plain.toString();
    if (Current() != before) changed_(Current());
}

}  // namespace vento::desktop::qt
