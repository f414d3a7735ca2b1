#include "platform/wayland/kwin/KWinScriptBridge.h"
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

// Outside any namespace, as Qt's resource initialiser must be.
static void initBridgeResource() { Q_INIT_RESOURCE(kwin_bridge); }

namespace orlo::kwin {

namespace {
const QString kwinService = QStringLiteral("org.kde.KWin");
const QString scriptingPath = QStringLiteral("/Scripting");
const QString scriptingInterface = QStringLiteral("org.kde.kwin.Scripting");
const QString objectPath = QStringLiteral("/app/orlo/KWinScript");
// KWin gives up on an answer after 25 seconds; an idle script is answered before that.
constexpr int idleAnswerMs = 20000;
constexpr int firstReportMs = 5000;
constexpr int callMs = 3000;
// The script asks again at once after each answer; not asking for longer than KWin waits
// for an answer means a call of its own failed and it stopped.
constexpr int scriptStoppedMs = 30000;

QDBusMessage scripting(const QDBusConnection& bus, const QString& method, const QVariantList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(kwinService, scriptingPath, scriptingInterface, method);
    call.setArguments(arguments);
    return bus.call(call, QDBus::Block, callMs);
}

// The script with Orlo's bus name in it, in a file only the user can read.
QString writeScript(const QString& plugin, const QString& service, QString* error)
{
    initBridgeResource();
    QFile source(QStringLiteral(":/kwin/orlo-kwin-bridge.js"));
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString path = folder + QLatin1Char('/') + plugin + QStringLiteral(".js");
    QSaveFile file(path);
    if (!source.open(QIODevice::ReadOnly) || folder.isEmpty() || !file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("Orlo could not write its window script for KWin to %1.").arg(path);
        return {};
    }
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(source.readAll().replace("@ORLO_SERVICE@", service.toUtf8()));
    if (!file.commit()) {
        *error = QStringLiteral("Orlo could not write its window script for KWin to %1.").arg(path);
        return {};
    }
    return path;
}
}  // namespace

bool KWinScriptBridge::offeredOn(const QDBusConnection& bus)
{
    const QDBusMessage call = QDBusMessage::createMethodCall(kwinService, scriptingPath,
                                                             QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
    const QDBusMessage reply = bus.call(call, QDBus::Block, callMs);
    return reply.type() == QDBusMessage::ReplyMessage
        && reply.arguments().value(0).toString().contains(QLatin1String("\"org.kde.kwin.Scripting\""));
}

KWinScriptBridge::KWinScriptBridge(const QDBusConnection& bus, const QString& plugin)
    : bus_(bus), plugin_(plugin), kwinWatcher_(kwinService, bus, QDBusServiceWatcher::WatchForOwnerChange),
      desktop_([this](const QJsonObject& request) { send(request); })
{
    sinceAnswer_.start();
    // A KWin that started again has none of the scripts loaded before.
    connect(&kwinWatcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, [this](const QString&, const QString&, const QString& owner) {
        if (!owner.isEmpty()) reload();
    });
    idle_.setSingleShot(true);
    idle_.setInterval(idleAnswerMs);
    connect(&idle_, &QTimer::timeout, this, &KWinScriptBridge::answerWaitingScript);
}

std::unique_ptr<KWinScriptBridge> KWinScriptBridge::start(const QDBusConnection& bus, QString* error, const QString& plugin)
{
    std::unique_ptr<KWinScriptBridge> bridge(new KWinScriptBridge(bus, plugin));
    if (!bridge->bus_.registerObject(objectPath, bridge.get(), QDBusConnection::ExportScriptableSlots)) {
        *error = QStringLiteral("Orlo could not offer KWin its window object on the session bus.");
        return nullptr;
    }
    if (!bridge->load(error)) return nullptr;
    if (!bridge->desktop_.hasReport()) {
        QEventLoop wait;
        QTimer::singleShot(firstReportMs, &wait, &QEventLoop::quit);
        connect(&bridge->desktop_, &KWinDesktop::changed, &wait, &QEventLoop::quit);
        wait.exec();
    }
    // KWin has read the file once the script speaks.
    QFile::remove(bridge->scriptPath_);
    if (!bridge->desktop_.hasReport()) {
        *error = QStringLiteral("KWin loaded Orlo's window script but it did not start; KWin's scripts may be switched off.");
        return nullptr;
    }
    return bridge;
}

KWinScriptBridge::~KWinScriptBridge()
{
    unload();
    bus_.unregisterObject(objectPath);
    if (!scriptPath_.isEmpty()) QFile::remove(scriptPath_);
}

bool KWinScriptBridge::load(QString* error)
{
    kwinOwner_ = bus_.interface()->serviceOwner(kwinService);
    const QDBusReply<bool> leftOver = scripting(bus_, QStringLiteral("isScriptLoaded"), {plugin_});
    if (leftOver.isValid() && leftOver.value()) scripting(bus_, QStringLiteral("unloadScript"), {plugin_});

    scriptPath_ = writeScript(plugin_, bus_.baseService(), error);
    if (scriptPath_.isEmpty()) return false;
    const QDBusReply<int> id = scripting(bus_, QStringLiteral("loadScript"), {scriptPath_, plugin_});
    if (!id.isValid() || id.value() < 0) {
        *error = QStringLiteral("KWin refused Orlo's window script%1.").arg(id.isValid() ? QString() : QStringLiteral(": ") + id.error().message());
        return false;
    }
    loaded_ = true;
    // KWin 6 names the script's object under /Scripting, KWin 5 at the root.
    for (const QString& path : {QStringLiteral("/Scripting/Script%1"), QStringLiteral("/%1")}) {
        const QDBusMessage run = QDBusMessage::createMethodCall(kwinService, path.arg(id.value()), QStringLiteral("org.kde.kwin.Script"),
                                                                QStringLiteral("run"));
        if (bus_.call(run, QDBus::Block, callMs).type() == QDBusMessage::ReplyMessage) return true;
    }
    *error = QStringLiteral("KWin loaded Orlo's window script but would not run it.");
    return false;
}

void KWinScriptBridge::unload()
{
    if (!loaded_) return;
    loaded_ = false;
    scripting(bus_, QStringLiteral("unloadScript"), {plugin_});
}

void KWinScriptBridge::reload()
{
    unload();
    waiting_.reset();
    sinceAnswer_.restart();
    QString error;
    if (!load(&error)) qWarning("Orlo: %s", qPrintable(error));
}

bool KWinScriptBridge::fromKWin() const { return calledFromDBus() && message().service() == kwinOwner_; }

bool KWinScriptBridge::Report(const QString& json)
{
    if (!fromKWin()) return false;
    if (auto report = parseKWinReport(json.toUtf8())) desktop_.apply(std::move(*report));
    return true;
}

QString KWinScriptBridge::Next()
{
    if (!fromKWin()) return QStringLiteral("[]");
    answerWaitingScript();
    setDelayedReply(true);
    waiting_ = message();
    if (queued_.isEmpty()) idle_.start();
    else answerWaitingScript();
    return {};
}

void KWinScriptBridge::send(const QJsonObject& request)
{
    queued_.append(request);
    if (!waiting_ && sinceAnswer_.elapsed() > scriptStoppedMs) reload();
    answerWaitingScript();
}

void KWinScriptBridge::answerWaitingScript()
{
    if (!waiting_) return;
    idle_.stop();
    bus_.send(waiting_->createReply(QString::fromUtf8(QJsonDocument(queued_).toJson(QJsonDocument::Compact))));
    queued_ = QJsonArray();
    waiting_.reset();
    sinceAnswer_.restart();
}

}  // namespace orlo::kwin
