#include "platform/linux/DesktopEntries.h"
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStandardPaths>
#include <QTextStream>

namespace orlo {

DesktopEntries::DesktopEntries(QStringList dataDirs) : dataDirs_(std::move(dataDirs))
{
    if (dataDirs_.isEmpty()) dataDirs_ = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
}

static QHash<QString, QString> readDesktopEntry(const QString& path)
{
    QHash<QString, QString> values;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return values;
    QTextStream in(&file);
    bool inEntry = false;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.startsWith('[')) {
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const int eq = line.indexOf('=');
        if (inEntry && eq > 0) values.insert(line.left(eq).trimmed(), line.mid(eq + 1).trimmed());
    }
    return values;
}

// The program an Exec line starts, e.g. "xterm" for "env LANG=C /usr/bin/xterm -ls %U".
static QString programName(const QString& exec)
{
    for (const QString& token : exec.split(' ', Qt::SkipEmptyParts)) {
        if (token == QLatin1String("env") || token.contains('=')) continue;
        return token.section('/', -1).remove('"').toLower();
    }
    return {};
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
            const auto values = readDesktopEntry(path);
            if (values.value(QStringLiteral("NoDisplay")) == QLatin1String("true") && !values.contains(QStringLiteral("StartupWMClass")))
                continue;
            const Entry entry{id, values.value(QStringLiteral("Name"), id)};
            byKey_.insert(id.toLower(), byKey_.value(id.toLower(), entry));
            const QString wmClass = values.value(QStringLiteral("StartupWMClass")).toLower();
            if (!wmClass.isEmpty() && !byKey_.contains(wmClass)) byKey_.insert(wmClass, entry);
            // "org.gnome.TextEditor" is also found by its last part.
            const QString last = id.section('.', -1).toLower();
            if (last != id.toLower() && !byKey_.contains(last)) byKey_.insert(last, entry);
            programs.append({programName(values.value(QStringLiteral("Exec"))), entry});
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

}  // namespace orlo
