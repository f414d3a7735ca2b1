#pragma once
#include "platform/wayland/kwin/KWinDesktop.h"
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>

namespace orlo::kwin {

// Orlo's script inside KWin and the private D-Bus object it talks to. Starting loads the
// script through org.kde.kwin.Scripting (first unloading one that an Orlo which did not stop
// in order left behind: they share one plugin name) and waits for its first report; the
// bridge unloads it again when it goes.
//
// Requests reach the script as the answer to its "Next" call, which Orlo holds until it has
// one: a request is carried out one bus round trip after it is made, without KWin loading
// anything new. A script that stopped asking (KWin gave up on a call while Orlo was
// stalled) or a KWin that started again gets the script loaded anew.
//
// Another program may run the same script under a plugin name of its own, to watch the
// windows beside a running Orlo (the tests and benchmarks do).
class KWinScriptBridge : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.orlo.KWinScript")
public:
    static constexpr const char* pluginName = "orlo-kwin-bridge";

    // Whether KWin offers its scripting interface on this bus.
    static bool offeredOn(const QDBusConnection& bus);
    // Nothing, with the reason, when KWin refuses the script or the script does not report.
    static std::unique_ptr<KWinScriptBridge> start(const QDBusConnection& bus, QString* error,
                                                   const QString& plugin = QString::fromLatin1(pluginName));
    ~KWinScriptBridge() override;

    KWinDesktop& desktop() { return desktop_; }

public slots:
    Q_SCRIPTABLE bool Report(const QString& json);
    Q_SCRIPTABLE QString Next();

private:
    KWinScriptBridge(const QDBusConnection& bus, const QString& plugin);
    bool load(QString* error);
    void unload();
    void reload();
    void send(const QJsonObject& request);
    void answerWaitingScript();
    bool fromKWin() const;

    QDBusConnection bus_;
    QString plugin_;
    QDBusServiceWatcher kwinWatcher_;
    KWinDesktop desktop_;
    QString scriptPath_;
    QString kwinOwner_;  // KWin's unique bus name: only it may report
    std::optional<QDBusMessage> waiting_;  // the script's Next call, while Orlo holds it
    QJsonArray queued_;
    QTimer idle_;
    QElapsedTimer sinceAnswer_;  // since the script's last Next call was answered
    bool loaded_ = false;
};

}  // namespace orlo::kwin
