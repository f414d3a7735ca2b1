#pragma once
#include <QList>
#include <QString>
#include <QStringList>

namespace orlo {

// The actions other programs ask the running Orlo for, on its command line
// ("orlo snap left-half") and on the session bus: their names, what they take, and the
// checking of a command's words before they are sent.
class OrloCommands {
public:
    struct Command {
        QString name;
        QString argument;  // "" when it takes none
        bool argumentOptional = false;
        QString help;
    };

    static const QList<Command>& all();
    // The words a command's argument may be: settings pages, snapping actions.
    static QStringList settingsPages();
    static QStringList snapActions();
    // Empty when the words name an action with fitting arguments, else what is wrong.
    static QString check(const QStringList& words);
    // "orlo --help".
    static QString usage();
};

}  // namespace orlo
