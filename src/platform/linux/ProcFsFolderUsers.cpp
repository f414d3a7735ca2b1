#include "platform/linux/ProcFsFolderUsers.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orlo {

QByteArray ProcFsFolderUsers::mappedFile(QByteArrayView line)
{
    // "7f2a1c000000-7f2a1c021000 r--p 00000000 fd:01 1311  /home/u/.cache/x/index" : the
    // address range, permissions, offset, device and inode, then the file, if any.
    qsizetype at = 0;
    for (int field = 0; field < 5; ++field) {
        while (at < line.size() && line[at] == ' ') ++at;
        if (at == line.size()) return {};
        while (at < line.size() && line[at] != ' ') ++at;
    }
    while (at < line.size() && line[at] == ' ') ++at;
    if (at == line.size() || line[at] != '/') return {};
    QByteArray file = line.sliced(at).toByteArray();
    if (file.endsWith(" (deleted)")) file.chop(10);
    return file;
}

// The names in a folder, links among them not followed.
static QList<QByteArray> namesIn(const QByteArray& folder)
{
    QList<QByteArray> names;
    DIR* dir = ::opendir(folder.constData());
    if (!dir) return names;
    while (const dirent* entry = ::readdir(dir))
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) names << QByteArray(entry->d_name);
    ::closedir(dir);
    return names;
}

static QByteArray linkTarget(const QByteArray& path)
{
    char target[4096];
    const ssize_t n = ::readlink(path.constData(), target, sizeof target);
    return n > 0 ? QByteArray(target, n) : QByteArray();
}

QHash<QString, QString> ProcFsFolderUsers::programsUsingEntriesOf(const QString& folder, const QString& procRoot)
{
    const QByteArray prefix = QFile::encodeName(QDir::cleanPath(folder)) + '/';
    QHash<QString, QString> users;
    auto note = [&](const QByteArray& file, const QString& program) {
        if (!file.startsWith(prefix)) return;
        const QByteArray below = file.mid(prefix.size());
        const QString entry = QFile::decodeName(below.left(below.indexOf('/')));
        if (!entry.isEmpty() && !users.contains(entry)) users.insert(entry, program);
    };
    QHash<QString, QString> programsByName;  // lower case
    const QByteArray root = QFile::encodeName(procRoot) + '/';
    for (const QByteArray& pid : namesIn(QFile::encodeName(procRoot))) {
        if (pid.front() < '1' || pid.front() > '9') continue;
        const QByteArray base = root + pid;
        struct stat owner{};
        if (::stat(base.constData(), &owner) != 0 || owner.st_uid != getuid()) continue;
        const QByteArray exe = linkTarget(base + "/exe");
        if (exe.isEmpty()) continue;  // a kernel thread, or gone
        QFile commFile(QFile::decodeName(base + "/comm"));
        const QString program = commFile.open(QIODevice::ReadOnly) ? QString::fromUtf8(commFile.readAll().trimmed()) : QString();
        if (program.isEmpty()) continue;
        programsByName.insert(program.toLower(), program);
        programsByName.insert(QFileInfo(QFile::decodeName(exe)).fileName().toLower(), program);
        note(linkTarget(base + "/cwd"), program);
        for (const QByteArray& fd : namesIn(base + "/fd")) note(linkTarget(base + "/fd/" + fd), program);
        QFile maps(QFile::decodeName(base + "/maps"));
        if (!maps.open(QIODevice::ReadOnly)) continue;
        const QByteArray text = maps.readAll();
        for (qsizetype at = text.indexOf(prefix); at >= 0; at = text.indexOf(prefix, at + 1)) {
            const qsizetype start = text.lastIndexOf('\n', at) + 1;
            const qsizetype end = text.indexOf('\n', at);
            note(mappedFile(QByteArrayView(text).sliced(start, (end < 0 ? text.size() : end) - start)), program);
            if (end < 0) break;
            at = end;
        }
    }
    for (const QString& entry : QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        if (const auto it = programsByName.constFind(entry.toLower()); it != programsByName.constEnd() && !users.contains(entry))
            users.insert(entry, *it);
    return users;
}

}  // namespace orlo
