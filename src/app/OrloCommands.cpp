#include "app/OrloCommands.h"
#include "windows/SnapAction.h"
#include <QCoreApplication>

namespace orlo {

namespace {
QString tr(const char* text) { return QCoreApplication::translate("OrloCommands", text); }

// A list of words broken into lines that fit a terminal, each after the first indented.
QString wrapped(const QString& label, const QStringList& words)
{
    constexpr int width = 78;
    QString text = label;
    int column = int(label.size());
    for (int i = 0; i < words.size(); ++i) {
        const QString word = words[i] + (i + 1 < words.size() ? QStringLiteral(",") : QStringLiteral("."));
        if (column + 1 + word.size() > width) {
            text += QStringLiteral("\n ");
            column = 1;
        }
        text += QLatin1Char(' ') + word;
        column += 1 + int(word.size());
    }
    return text + QLatin1Char('\n');
}
}  // namespace

const QList<OrloCommands::Command>& OrloCommands::all()
{
    static const QList<Command> commands{
        {QStringLiteral("switcher"), {}, false, tr("open the window switcher")},
        {QStringLiteral("clipboard"), {}, false, tr("open the clipboard history")},
        {QStringLiteral("settings"), QStringLiteral("PAGE"), true, tr("open the settings, starting Orlo if needed")},
        {QStringLiteral("snap"), QStringLiteral("ACTION"), false, tr("snap the focused window")},
        {QStringLiteral("toggle-keyboard-cleaning"), {}, false, tr("lock the keyboard for cleaning, or unlock it")},
        {QStringLiteral("toggle-prevent-sleep"), {}, false, tr("keep the display awake, or let it sleep again")},
        {QStringLiteral("quit"), {}, false, tr("quit Orlo")},
    };
    return commands;
}

QStringList OrloCommands::settingsPages()
{
    return {QStringLiteral("general"), QStringLiteral("system"), QStringLiteral("windows"), QStringLiteral("switcher"),
            QStringLiteral("clipboard")};
}

QStringList OrloCommands::snapActions()
{
    QStringList names;
    for (SnapAction action : SnapAction::all()) names << action.commandName();
    return names;
}

QString OrloCommands::check(const QStringList& words)
{
    if (words.isEmpty()) return tr("No action given.");
    const auto command = std::find_if(all().begin(), all().end(), [&](const Command& c) { return c.name == words.first(); });
    if (command == all().end()) return tr("Unknown action \"%1\".").arg(words.first());
    const qsizetype arguments = words.size() - 1;
    if (command->argument.isEmpty() && arguments > 0) return tr("\"%1\" takes no argument.").arg(command->name);
    if (arguments > 1) return tr("\"%1\" takes one %2.").arg(command->name, command->argument);
    if (arguments == 0) return command->argumentOptional || command->argument.isEmpty() ? QString()
                                                                                         : tr("\"%1\" needs an %2.").arg(command->name, command->argument);
    const QStringList allowed = command->name == QLatin1String("snap") ? snapActions() : settingsPages();
    if (!allowed.contains(words[1]))
        return tr("Unknown %1 \"%2\" for \"%3\".").arg(command->argument, words[1], command->name);
    return {};
}

QString OrloCommands::usage()
{
    QString text = tr("Usage: orlo [ACTION [ARGUMENT]]\n\n"
                      "Without an action, starts Orlo, or opens the settings of the Orlo already\nrunning.\n\n"
                      "Actions, carried out by the running Orlo:\n");
    for (const Command& c : all()) {
        QString call = c.name;
        if (!c.argument.isEmpty()) call += c.argumentOptional ? QStringLiteral(" [%1]").arg(c.argument) : QLatin1Char(' ') + c.argument;
        text += QStringLiteral("  %1  %2\n").arg(call, -26).arg(c.help);
    }
    text += QLatin1Char('\n') + wrapped(QStringLiteral("PAGE:"), settingsPages()) + wrapped(QStringLiteral("ACTION:"), snapActions());
    text += tr("\nOptions:\n  -h, --help                  show this help\n  -v, --version               show Orlo's version\n\n"
               "Exit status: 0 when the action was carried out, 1 when no Orlo runs or it could\n"
               "not act, 2 for an unknown action.\n");
    return text;
}

}  // namespace orlo
