#pragma once
#include <QByteArrayView>
#include <QHash>
#include <QString>

namespace orlo {

// Which of the user's running programs use the entries of a folder, as /proc tells it: a file
// open, mapped or taken as working folder below an entry, or a program that goes by the
// entry's name.
class ProcFsFolderUsers {
public:
    // For each entry of the folder that a running program uses, by entry name: that program.
    static QHash<QString, QString> programsUsingEntriesOf(const QString& folder, const QString& procRoot = QStringLiteral("/proc"));
    // The file a line of /proc/PID/maps maps; empty when it maps none.
    static QByteArray mappedFile(QByteArrayView line);
};

}  // namespace orlo
