// GIO first: it names a struct member "signals", which Qt's headers make a keyword.
#include <gio/gdesktopappinfo.h>
#include "platform/linux/DesktopEntries.h"
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <memory>

namespace orlo {

namespace {
struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using AppInfoPtr = std::unique_ptr<GDesktopAppInfo, GObjectUnref>;

QString takeString(char* text)
{
    const QString s = QString::fromUtf8(text);
    g_free(text);
    return s;
}

// The program an entry starts, e.g. "xterm" for "env LANG=C /usr/bin/xterm -ls %U".
QString programName(GDesktopAppInfo* info)
{
    const char* exec = g_app_info_get_executable(G_APP_INFO(info));
    QString program = QString::fromUtf8(exec).section('/', -1).toLower();
    if (program != QLatin1String("env")) return program;
    // env runs the first word after its assignments.
    const QStringList words = QString::fromUtf8(g_app_info_get_commandline(G_APP_INFO(info))).split(' ', Qt::SkipEmptyParts);
    for (qsizetype i = 1; i < words.size(); ++i)
        if (!words[i].contains('=') && !words[i].startsWith('-')) return words[i].section('/', -1).remove('"').toLower();
    return {};
}

// GIO refuses entries that are not applications or whose program (Exec, TryExec) is not
// installed; a Hidden one (deleted, as far as the user is concerned) or one for other
// desktops only does not apply either.
AppInfoPtr appInfo(const QString& path)
{
    AppInfoPtr info(g_desktop_app_info_new_from_filename(QFile::encodeName(path).constData()));
    if (info && (g_desktop_app_info_get_is_hidden(info.get()) || !g_desktop_app_info_get_show_in(info.get(), nullptr)))
        info.reset();
    return info;
}

DesktopEntries::Entry entryOf(GDesktopAppInfo* info, const QString& id)
{
    DesktopEntries::Entry entry{id, QString::fromUtf8(g_app_info_get_name(G_APP_INFO(info))), {}};
    if (entry.name.isEmpty()) entry.name = id;
    if (GIcon* icon = g_app_info_get_icon(G_APP_INFO(info))) entry.icon = takeString(g_icon_to_string(icon));
    return entry;
}
}  // namespace

DesktopEntries::DesktopEntries(QStringList dataDirs) : dataDirs_(std::move(dataDirs))
{
    if (dataDirs_.isEmpty()) dataDirs_ = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
}

std::optional<DesktopEntries::Entry> DesktopEntries::read(const QString& path, const QString& id)
{
    const AppInfoPtr info = appInfo(path);
    return info ? std::optional(entryOf(info.get(), id)) : std::nullopt;
}

void DesktopEntries::load()
{
    loaded_ = true;
    // Windows are often known only by their program's name; such names count last.
    QList<QPair<QString, Entry>> programs;
    // Later folders are less important: do not let them replace what an earlier one gave.
    for (const QString& dir : std::as_const(dataDirs_)) {
        const QString apps = QDir(dir).filePath(QStringLiteral("applications"));
        QDirIterator it(apps, {QStringLiteral("*.desktop")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QString id = QDir(apps).relativeFilePath(path);
            id.chop(8);
            id.replace('/', '-');
            if (byId_.contains(id)) continue;
            const AppInfoPtr info = appInfo(path);
            const auto entry = info ? std::optional(entryOf(info.get(), id)) : std::nullopt;
            // A hidden or inapplicable entry still hides the same id in less important folders.
            byId_.insert(id, entry.value_or(Entry{}));
            if (!entry) continue;
            byKey_.insert(id.toLower(), byKey_.value(id.toLower(), *entry));
            const QString wmClass = QString::fromUtf8(g_desktop_app_info_get_startup_wm_class(info.get())).toLower();
            if (!wmClass.isEmpty() && !byKey_.contains(wmClass)) byKey_.insert(wmClass, *entry);
            // "org.gnome.TextEditor" is also found by its last part.
            const QString last = id.section('.', -1).toLower();
            if (last != id.toLower() && !byKey_.contains(last)) byKey_.insert(last, *entry);
            // Entries the menu does not show name no windows by their program.
            if (!g_desktop_app_info_get_nodisplay(info.get())) programs.append({programName(info.get()), *entry});
        }
    }
    for (const auto& [program, entry] : std::as_const(programs))
        if (!program.isEmpty() && !byKey_.contains(program)) byKey_.insert(program, entry);
}

const DesktopEntries::Entry* DesktopEntries::find(const QStringList& hints)
{
    if (!loaded_) load();
    for (const QString& hint : hints) {
        if (hint.isEmpty()) continue;
        if (auto it = byKey_.constFind(hint.toLower()); it != byKey_.constEnd()) return &*it;
    }
    return nullptr;
}

const DesktopEntries::Entry* DesktopEntries::byId(const QString& id)
{
    if (!loaded_) load();
    const auto it = byId_.constFind(id);
    return it == byId_.constEnd() || it->id.isEmpty() ? nullptr : &*it;
}

std::optional<AppInfo> DesktopEntries::applicationAt(const QString& path)
{
    const QFileInfo file(path);
    if (!file.isFile() || file.suffix() != QLatin1String("desktop")) return std::nullopt;
    const auto entry = read(path, file.completeBaseName());
    if (!entry) return std::nullopt;
    return AppInfo{0, entry->id, entry->name};
}

QString DesktopEntries::applicationsFolder()
{
    const QStringList dirs = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (auto it = dirs.rbegin(); it != dirs.rend(); ++it)
        if (QFileInfo(*it + QStringLiteral("/applications")).isDir()) return *it + QStringLiteral("/applications");
    return QDir::homePath();
}

}  // namespace orlo
