#include "app/AppIdentity.h"
#include "app/OrloApp.h"
#include "app/SingleInstance.h"
#include "platform/Platform.h"
#include "platform/linux/TerminationSignals.h"
#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QSessionManager>
#include <QStandardPaths>
#include <unistd.h>

static QString runtimeFolder()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty()) folder = QDir::temp().filePath(QStringLiteral("orlo-%1").arg(getuid()));
    return folder;
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orlo"));
    QApplication::setApplicationVersion(QString::fromLatin1(orlo::AppVersion));
    QApplication::setDesktopFileName(QString::fromLatin1(orlo::AppId));
    QApplication::setWindowIcon(QIcon::fromTheme(QString::fromLatin1(orlo::AppId), QIcon(QStringLiteral(":/icons/app.svg"))));
    QApplication::setQuitOnLastWindowClosed(false);

    const QString configFolder = QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
                                     .filePath(QStringLiteral("Orlo"));
    orlo::SingleInstance instance(configFolder, runtimeFolder());
    if (!instance.becomePrimary()) {
        if (instance.sendToPrimary("settings")) return 0;
        fprintf(stderr, "Orlo: another Orlo is running but did not answer.\n");
        return 1;
    }

    QString error;
    auto platform = orlo::createSystemPlatform(&error);
    if (!platform) {
        fprintf(stderr, "Orlo: %s\n", qPrintable(error));
        return 1;
    }

    orlo::OrloApp orlo(*platform);
    QObject::connect(&instance, &orlo::SingleInstance::messageReceived, &orlo, [&orlo](const QByteArray& message) {
        if (message == "settings") orlo.showSettings();
    });
    orlo::quitOnTerminationSignals();
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &orlo, [&orlo](QSessionManager&) { orlo.prepareToQuit(); });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &orlo, &orlo::OrloApp::prepareToQuit);
    return app.exec();
}
