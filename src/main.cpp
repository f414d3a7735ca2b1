#include "app/AppIdentity.h"
#include "app/OrloApp.h"
#include "app/OrloCommands.h"
#include "app/SingleInstance.h"
#include "platform/Platform.h"
#include "platform/posix/TerminationSignals.h"
#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QSessionManager>
#include <QStandardPaths>
#include <cstdio>
#include <unistd.h>

namespace {

QString runtimeFolder()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty()) folder = QDir::temp().filePath(QStringLiteral("orlo-%1").arg(getuid()));
    return folder;
}

QString configFolder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)).filePath(QStringLiteral("Orlo"));
}

void say(FILE* stream, const QString& text) { fputs(qPrintable(text), stream); }

// The words of an action as the running Orlo receives them: one line, tab-separated.
QByteArray message(const QStringList& words) { return words.join(QLatin1Char('\t')).toUtf8(); }

// Hands an action to the running Orlo and reports its answer; the exit status.
int sendAction(int argc, char** argv, const QStringList& words)
{
    QCoreApplication app(argc, argv);
    orlo::SingleInstance instance(configFolder(), runtimeFolder());
    if (!instance.isPrimaryElsewhere()) {
        say(stderr, QStringLiteral("orlo: Orlo is not running; start it first with \"orlo\".\n"));
        return 1;
    }
    // Snapping waits for the window to settle: the answer may take a moment.
    const auto answer = instance.sendToPrimary(message(words), 10000);
    if (!answer) {
        say(stderr, QStringLiteral("orlo: the running Orlo did not answer.\n"));
        return 1;
    }
    if (*answer == "ok") return 0;
    say(stderr, QStringLiteral("orlo: %1\n").arg(QString::fromUtf8(answer->mid(answer->indexOf(' ') + 1))));
    return 1;
}

// Starts Orlo, or, when it runs already, opens its settings; the exit status.
int runOrlo(int argc, char** argv, const QStringList& settingsWords)
{
    const QString problem = orlo::prepareSystemDisplay();
    if (!problem.isEmpty()) {
        say(stderr, QStringLiteral("orlo: %1\n").arg(problem));
        return 1;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orlo"));
    QApplication::setApplicationVersion(QString::fromLatin1(orlo::AppVersion));
    QApplication::setDesktopFileName(QString::fromLatin1(orlo::AppId));
    QApplication::setWindowIcon(QIcon::fromTheme(QString::fromLatin1(orlo::AppId), QIcon(QStringLiteral(":/icons/app.svg"))));
    QApplication::setQuitOnLastWindowClosed(false);

    orlo::SingleInstance instance(configFolder(), runtimeFolder());
    orlo::OrloApp* running = nullptr;
    const bool primary = instance.becomePrimary([&running](const QByteArray& text) {
        const QStringList words = QString::fromUtf8(text).split(QLatin1Char('\t'));
        QString why = orlo::OrloCommands::check(words);
        if (why.isEmpty()) why = running ? running->perform(words) : QStringLiteral("Orlo is still starting.");
        return why.isEmpty() ? QByteArray("ok") : "error " + why.toUtf8();
    });
    if (!primary) {
        if (instance.sendToPrimary(message(settingsWords))) return 0;
        say(stderr, QStringLiteral("orlo: another Orlo is running but did not answer.\n"));
        return 1;
    }

    QString error;
    auto platform = orlo::createSystemPlatform(&error);
    if (!platform) {
        say(stderr, QStringLiteral("orlo: %1\n").arg(error));
        return 1;
    }
    orlo::OrloApp orlo(*platform);
    running = &orlo;
    if (settingsWords.size() > 1) orlo.showSettings(settingsWords[1]);
    orlo::quitOnTerminationSignals();
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &orlo, [&orlo](QSessionManager&) { orlo.prepareToQuit(); });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &orlo, &orlo::OrloApp::prepareToQuit);
    return app.exec();
}

}  // namespace

int main(int argc, char** argv)
{
    QStringList words;
    for (int i = 1; i < argc; ++i) words << QString::fromLocal8Bit(argv[i]);
    const QString first = words.value(0);
    if (first == QLatin1String("-h") || first == QLatin1String("--help")) {
        say(stdout, orlo::OrloCommands::usage());
        return 0;
    }
    if (first == QLatin1String("-v") || first == QLatin1String("--version")) {
        say(stdout, QStringLiteral("orlo %1\n").arg(QString::fromLatin1(orlo::AppVersion)));
        return 0;
    }
    if (words.isEmpty()) return runOrlo(argc, argv, {QStringLiteral("settings")});
    const QString wrong = orlo::OrloCommands::check(words);
    if (!wrong.isEmpty()) {
        say(stderr, QStringLiteral("orlo: %1\n\n%2").arg(wrong, orlo::OrloCommands::usage()));
        return 2;
    }
    return first == QLatin1String("settings") ? runOrlo(argc, argv, words) : sendAction(argc, argv, words);
}
