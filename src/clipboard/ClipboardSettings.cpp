#include "clipboard/ClipboardSettings.h"
#include "kit/Defaults.h"

namespace orlo {

namespace {
const QString ShortcutKey = QStringLiteral("clipboard.shortcut");
const QString MaxItemsKey = QStringLiteral("clipboard.maxItems");
const QString ExcludedKey = QStringLiteral("clipboard.excluded");
const QString AutoPasteKey = QStringLiteral("clipboard.autoPaste");
}  // namespace

const Shortcut ClipboardSettings::DefaultShortcut{KeyCode::V, ModifierFlag::Command | ModifierFlag::Shift};

QList<ExcludedApp> ClipboardSettings::defaultExcluded()
{
#ifdef Q_OS_MACOS
    return {
        {QStringLiteral("com.1password.1password"), QStringLiteral("1Password")},
        {QStringLiteral("com.agilebits.onepassword7"), QStringLiteral("1Password 7")},
        {QStringLiteral("com.bitwarden.desktop"), QStringLiteral("Bitwarden")},
        {QStringLiteral("com.apple.Passwords"), QStringLiteral("Passwords")},
        {QStringLiteral("com.apple.keychainaccess"), QStringLiteral("Keychain Access")},
    };
#else
    // Linux password managers by their desktop-file ids (Bitwarden also as its Flatpak).
    return {
        {QStringLiteral("org.keepassxc.KeePassXC"), QStringLiteral("KeePassXC")},
        {QStringLiteral("bitwarden"), QStringLiteral("Bitwarden")},
        {QStringLiteral("com.bitwarden.desktop"), QStringLiteral("Bitwarden")},
        {QStringLiteral("1password"), QStringLiteral("1Password")},
        {QStringLiteral("keepass2"), QStringLiteral("KeePass2")},
        {QStringLiteral("org.gnome.World.Secrets"), QStringLiteral("Secrets")},
        {QStringLiteral("org.gnome.seahorse.Application"), QStringLiteral("Passwords and Keys")},
    };
#endif
}

ClipboardSettings::ClipboardSettings(Defaults& defaults, QObject* parent) : QObject(parent), defaults_(defaults)
{
    connect(&defaults_, &Defaults::changed, this, [this](const QString& key) {
        if (!key.startsWith(QLatin1String("clipboard."))) return;
        if (key == ExcludedKey) excludedCache_.reset();
        emit changed();
    });
}

Shortcut ClipboardSettings::shortcut() const
{
    const auto data = defaults_.dataValue(ShortcutKey);
    const auto decoded = data ? Shortcut::fromJson(*data) : std::nullopt;
    return decoded.value_or(DefaultShortcut);
}

void ClipboardSettings::setShortcut(const Shortcut& shortcut)
{
    defaults_.set(ShortcutKey, shortcut.toJson());
    if (onShortcutChange) onShortcutChange();
}

qint64 ClipboardSettings::maxItems() const { return defaults_.integerValue(MaxItemsKey).value_or(DefaultMaxItems); }

void ClipboardSettings::setMaxItems(qint64 maxItems)
{
    defaults_.set(MaxItemsKey, maxItems);
    if (onMaxItemsChange) onMaxItemsChange();
}

QList<ExcludedApp> ClipboardSettings::excluded() const
{
    if (!excludedCache_) {
        const auto data = defaults_.dataValue(ExcludedKey);
        const auto decoded = data ? ExcludedApp::fromJson(*data) : std::nullopt;
        excludedCache_ = decoded.value_or(defaultExcluded());
    }
    return *excludedCache_;
}

void ClipboardSettings::setExcluded(const QList<ExcludedApp>& apps) { defaults_.set(ExcludedKey, ExcludedApp::toJson(apps)); }

bool ClipboardSettings::autoPaste() const { return defaults_.boolValue(AutoPasteKey).value_or(true); }

void ClipboardSettings::setAutoPaste(bool on) { defaults_.set(AutoPasteKey, on); }

bool ClipboardSettings::isExcluded(const std::optional<QString>& bundleID) const
{
    if (!bundleID) return false;
    for (const ExcludedApp& app : excluded())
        if (app.bundleID == *bundleID) return true;
    return false;
}

}  // namespace orlo
