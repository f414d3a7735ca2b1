#include "WaylandSession.h"
#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <pwd.h>
#include <unistd.h>

namespace orlo::testing {

namespace {
const char* SwayConfig = R"(# The test session: two outputs side by side, nothing else on screen.
output HEADLESS-1 resolution 1280x800 position 0 0
output HEADLESS-2 resolution 1280x800 position 1280 0
xwayland disable
focus_on_window_activation focus
default_border normal
)";

bool writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size();
}
}  // namespace

WaylandSession::WaylandSession(QString compositor, User user) : compositor_(std::move(compositor)), user_(user)
{
    static int count = 0;
    busName_ = QStringLiteral("wayland-session-%1").arg(++count);
}

WaylandSession::~WaylandSession()
{
    QDBusConnection::disconnectFromBus(busName_);
    stop();
}

QString WaylandSession::userName() { return QStringLiteral("orlo-test"); }

bool WaylandSession::prepareUser()
{
    if (geteuid() != 0 || user_ == User::OfTheTests) return true;
    // Tests running side by side may make the user at the same time: one of them succeeds.
    if (!getpwnam(qPrintable(userName())))
        run(QStringLiteral("useradd"), {QStringLiteral("--system"), QStringLiteral("--no-create-home"), userName()});
    const passwd* user = getpwnam(qPrintable(userName()));
    if (!user) {
        error_ = QStringLiteral("could not create the user %1").arg(userName());
        return false;
    }
    const uint uid = user->pw_uid, gid = user->pw_gid;
    // The built programs must be reachable by the user: the folders above them open to all.
    for (QDir dir(QFileInfo(builtProgram(QStringLiteral("orlo"))).absolutePath()); !dir.isRoot(); dir.cdUp())
        QFile::setPermissions(dir.path(), QFile::permissions(dir.path()) | QFile::ExeOther | QFile::ReadOther);
    runAs(uid, gid);
    return true;
}

bool WaylandSession::start()
{
    resetEnvironment();
    if (!compositors().contains(compositor_)) {
        error_ = QStringLiteral("unknown compositor \"%1\"").arg(compositor_);
        return false;
    }
    env_.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    if (!prepareUser() || !startBus()) return false;
    return compositor_ == QLatin1String("sway") ? startSway() : startKWin();
}

bool WaylandSession::waitForSocket(QProcess* compositor)
{
    QString socket;
    waitFor([&] {
        const QStringList found = QDir(runtimeDir()).entryList({QStringLiteral("wayland-*")}, QDir::System);
        for (const QString& name : found)
            if (!name.endsWith(QLatin1String(".lock"))) socket = name;
        return !socket.isEmpty() || compositor->state() == QProcess::NotRunning;
    }, 20000);
    if (socket.isEmpty()) {
        error_ = QStringLiteral("%1 did not start: %2").arg(compositor_, QString::fromLocal8Bit(compositor->readAll().right(2000)));
        return false;
    }
    env_.insert(QStringLiteral("WAYLAND_DISPLAY"), socket);
    // The socket exists before the compositor answers on it.
    return waitFor([&] { return run(QStringLiteral("wayland-info"), {}) == 0; }, 10000);
}

bool WaylandSession::startSway()
{
    const QString config = dir_.filePath(QStringLiteral("sway.conf"));
    if (!writeFile(config, SwayConfig)) return false;
    QProcessEnvironment env = env_;
    env.insert(QStringLiteral("WLR_BACKENDS"), QStringLiteral("headless"));
    env.insert(QStringLiteral("WLR_RENDERER"), QStringLiteral("pixman"));
    env.insert(QStringLiteral("WLR_LIBINPUT_NO_DEVICES"), QStringLiteral("1"));
    env.insert(QStringLiteral("WLR_HEADLESS_OUTPUTS"), QStringLiteral("2"));
    QProcess* sway = launch(QStringLiteral("sway"), {QStringLiteral("-c"), config}, env, QProcess::MergedChannels);
    if (!waitForSocket(sway)) return false;
    // swaymsg finds sway through the socket it names in its environment.
    const QStringList ipc = QDir(runtimeDir()).entryList({QStringLiteral("sway-ipc.*.sock")}, QDir::System);
    if (!ipc.isEmpty()) env_.insert(QStringLiteral("SWAYSOCK"), runtimeDir() + QLatin1Char('/') + ipc.first());
    return true;
}

bool WaylandSession::trustWithFakeInput()
{
    // KWin reads the entries as it starts, and matches a client by the path of its program
    // file against the first word of each entry's Exec: Orlo's own entry, naming the built
    // program as the installed entry names the installed one. The key tool and the program
    // running the session (a benchmark that types itself) get copies.
    QFile source(QStringLiteral(ORLO_DESKTOP_ENTRY));
    if (!source.open(QIODevice::ReadOnly)) {
        error_ = QStringLiteral("cannot read Orlo's desktop entry %1").arg(source.fileName());
        return false;
    }
    const QByteArray entry = source.readAll();
    const QString applications = dataHome() + QStringLiteral("/applications");
    QDir().mkpath(applications);
    const QHash<QString, QString> entries{{QStringLiteral("app.orlo.Orlo"), builtProgram(QStringLiteral("orlo"))},
                                          {QStringLiteral("orlo-test-keys"), builtProgram(QStringLiteral("orlo-test-keys"))},
                                          {QStringLiteral("orlo-session-program"), QCoreApplication::applicationFilePath()}};
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        QByteArray text = entry;
        text.replace("Exec=orlo", "Exec=" + QFileInfo(it.value()).canonicalFilePath().toLocal8Bit());
        if (!writeFile(applications + QLatin1Char('/') + it.key() + QStringLiteral(".desktop"), text)) return false;
    }
    return true;
}

bool WaylandSession::startKWin()
{
    if (!trustWithFakeInput()) return false;
    // kwin_wayland carries a file capability (to raise its own limits) that a container's
    // bounding set may not allow: a copy without it starts everywhere.
    const QString kwin = dir_.filePath(QStringLiteral("kwin_wayland"));
    if (!QFile::copy(QStringLiteral("/usr/bin/kwin_wayland"), kwin)) {
        error_ = QStringLiteral("kwin_wayland is not installed");
        return false;
    }
    QProcessEnvironment env = env_;
    // KWin composites with OpenGL on the processor (Mesa's llvmpipe), which its screenshots
    // need; the tests' tool may take them.
    env.insert(QStringLiteral("KWIN_SCREENSHOT_NO_PERMISSION_CHECKS"), QStringLiteral("1"));
    QProcess* process = launch(kwin,
                               {QStringLiteral("--virtual"), QStringLiteral("--no-lockscreen"),
                                QStringLiteral("--socket"), QStringLiteral("wayland-kwin"), QStringLiteral("--width"),
                                QStringLiteral("1280"), QStringLiteral("--height"), QStringLiteral("800"),
                                QStringLiteral("--output-count"), QStringLiteral("2")},
                               env, QProcess::MergedChannels);
    if (!waitForSocket(process)) return false;
    // A test that calls KWin from its own process needs its scripting at once; the bus of a
    // session run as the plain user is that user's alone.
    return user_ == User::Plain || waitForKWinScripting(process);
}

bool WaylandSession::waitForKWinScripting(QProcess* kwin)
{
    // KWin offers its scripting object a little after its socket.
    QDBusConnection bus = connectToBus();
    auto offered = [&] {
        const QDBusMessage reply = bus.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.kde.KWin"), QStringLiteral("/Scripting"), QStringLiteral("org.freedesktop.DBus.Introspectable"),
            QStringLiteral("Introspect")));
        return reply.arguments().value(0).toString().contains(QLatin1String("org.kde.kwin.Scripting"));
    };
    if (waitFor([&] { return kwin->state() == QProcess::NotRunning || offered(); }, 15000) && kwin->state() != QProcess::NotRunning)
        return true;
    error_ = QStringLiteral("kwin_wayland offers no scripting: %1").arg(QString::fromLocal8Bit(kwin->readAll().right(2000)));
    return false;
}

QStringList WaylandSession::globals()
{
    static const QRegularExpression interface(QStringLiteral("interface: '([^']+)'"));
    QStringList out;
    for (auto it = interface.globalMatch(output(QStringLiteral("wayland-info"), {})); it.hasNext();)
        out << it.next().captured(1);
    return out;
}

QProcess* WaylandSession::launchQt(const QString& program, const QStringList& args)
{
    QProcessEnvironment env = env_;
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
    return launch(program, args, env);
}

bool WaylandSession::press(const QStringList& keys)
{
    return run(builtProgram(QStringLiteral("orlo-test-keys")), keys) == 0;
}

bool WaylandSession::screenshot(const QString& path)
{
    // grim, or KWin's own screenshots, write as the session's user, into the session's folder.
    const QString shot = dir_.filePath(QStringLiteral("screenshot.png"));
    QFile::remove(shot);
    const QString tool = compositor_ == QLatin1String("sway") ? QStringLiteral("grim") : builtProgram(QStringLiteral("orlo-test-shot"));
    if (QString said; run(tool, {shot}, &said) != 0) {
        fprintf(stderr, "no screenshot: %s\n", qPrintable(said));
        return false;
    }
    QFile::remove(path);
    return QFile::copy(shot, path);
}

QString WaylandSession::swaymsg(const QStringList& arguments) { return output(QStringLiteral("swaymsg"), arguments); }

QString WaylandSession::focusedTitle()
{
    std::function<QString(const QJsonObject&)> find = [&](const QJsonObject& node) -> QString {
        if (node.value(QStringLiteral("focused")).toBool()) return node.value(QStringLiteral("name")).toString();
        for (const char* children : {"nodes", "floating_nodes"})
            for (const QJsonValue& child : node.value(QLatin1String(children)).toArray())
                if (QString title = find(child.toObject()); !title.isNull()) return title;
        return {};
    };
    return find(QJsonDocument::fromJson(swaymsg({QStringLiteral("-t"), QStringLiteral("get_tree")}).toUtf8()).object());
}

QDBusConnection WaylandSession::connectToBus()
{
    return QDBusConnection::connectToBus(busAddress(), busName_);
}

bool WaylandSession::showWindow(const QString& title)
{
    QProcess* window = launchQt(builtProgram(QStringLiteral("orlo-test-window")), {title});
    QByteArray printed;
    return waitFor([&] { return (printed += window->readAllStandardOutput()).contains("ready") || window->state() == QProcess::NotRunning; },
                   10000)
           && printed.contains("ready");
}

bool WaylandSession::loadScript(const QString& pluginName, const QByteArray& text)
{
    const QString path = dir_.filePath(pluginName + QStringLiteral(".js"));
    if (!writeFile(path, text)) return false;
    QFile::setPermissions(path, QFile::permissions(path) | QFile::ReadOther);
    QDBusConnection bus = connectToBus();
    const QDBusReply<int> id = bus.call(QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), QStringLiteral("/Scripting"),
                                                                       QStringLiteral("org.kde.kwin.Scripting"), QStringLiteral("loadScript"))
                                        << path << pluginName);
    if (!id.isValid() || id.value() < 0) return false;
    const QDBusMessage run = QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), QStringLiteral("/%1").arg(id.value()),
                                                            QStringLiteral("org.kde.kwin.Script"), QStringLiteral("run"));
    return bus.call(run).type() == QDBusMessage::ReplyMessage;
}

}  // namespace orlo::testing
