#include "VirtualSession.h"
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRegularExpression>
#include <QThread>
#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>
#include <fcntl.h>
#include <poll.h>
#include <xcb/xcb.h>

namespace orlo::testing {

static const char* OpenboxConfig = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy></placement>
  <desktops><number>1</number></desktops>
  <keyboard></keyboard>
  <mouse>
    <dragThreshold>1</dragThreshold>
    <context name="Frame"><mousebind button="A-Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind></context>
    <context name="Client"><mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind></context>
    <context name="Titlebar">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="Left" action="Drag"><action name="Move"/></mousebind>
    </context>
    <context name="Top"><mousebind button="Left" action="Drag"><action name="Resize"><edge>top</edge></action></mousebind></context>
    <context name="Left"><mousebind button="Left" action="Drag"><action name="Resize"><edge>left</edge></action></mousebind></context>
    <context name="Right"><mousebind button="Left" action="Drag"><action name="Resize"><edge>right</edge></action></mousebind></context>
    <context name="Bottom"><mousebind button="Left" action="Drag"><action name="Resize"><edge>bottom</edge></action></mousebind></context>
    <context name="BLCorner"><mousebind button="Left" action="Drag"><action name="Resize"/></mousebind></context>
    <context name="BRCorner"><mousebind button="Left" action="Drag"><action name="Resize"/></mousebind></context>
    <context name="TLCorner"><mousebind button="Left" action="Drag"><action name="Resize"/></mousebind></context>
    <context name="TRCorner"><mousebind button="Left" action="Drag"><action name="Resize"/></mousebind></context>
  </mouse>
</openbox_config>
)";

VirtualSession::VirtualSession(QString windowManager) : windowManager_(std::move(windowManager)) {}

VirtualSession::~VirtualSession() = default;

QString VirtualSession::defaultWindowManager()
{
    const QString chosen = qEnvironmentVariable("ORLO_TEST_WM");
    return chosen.isEmpty() ? QStringLiteral("openbox") : chosen;
}

QStringList VirtualSession::windowManagers()
{
    return {QStringLiteral("openbox"), QStringLiteral("xfwm4"), QStringLiteral("kwin"), QStringLiteral("mutter"),
            QStringLiteral("metacity")};
}

bool VirtualSession::start()
{
    resetEnvironment();
    env_.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    // The GNOME window managers read their defaults from GSettings; no dconf daemon is needed.
    env_.insert(QStringLiteral("GSETTINGS_BACKEND"), switchingKeysFree_ || keyfileSettings_ ? QStringLiteral("keyfile") : QStringLiteral("memory"));
    if (!windowManagers().contains(windowManager_)) {
        error_ = QStringLiteral("unknown window manager \"%1\"").arg(windowManager_);
        return false;
    }
    return startXvfb() && startBus() && startWindowManager() && setUpMonitors() && (!tray_ || startTray());
}

namespace {
bool writeConfig(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size() && file.flush();
}
}  // namespace

bool VirtualSession::freeSwitchingKeys()
{
    QString path;
    QByteArray text;
    if (windowManager_ == QLatin1String("mutter") || windowManager_ == QLatin1String("metacity")) {
        // GSettings' keyfile back end: every key not written here keeps its default.
        path = configHome() + QStringLiteral("/glib-2.0/settings/keyfile");
        text = "[org/gnome/desktop/wm/keybindings]\n";
        for (const char* key : {"switch-applications", "switch-applications-backward", "switch-windows", "switch-windows-backward"})
            text += QByteArray(key) + "=@as []\n";
        // mutter grabs Super itself, to open its overview on a lone press.
        if (windowManager_ == QLatin1String("mutter")) text += "[org/gnome/mutter]\noverlay-key=''\n";
    } else if (windowManager_ == QLatin1String("xfwm4")) {
        // The user's own list replaces the defaults whole; closing a window is kept.
        path = configHome() + QStringLiteral("/xfce4/xfconf/xfce-perchannel-xml/xfce4-keyboard-shortcuts.xml");
        text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<channel name=\"xfce4-keyboard-shortcuts\" version=\"1.0\">\n"
               "  <property name=\"xfwm4\" type=\"empty\">\n"
               "    <property name=\"custom\" type=\"empty\">\n"
               "      <property name=\"override\" type=\"bool\" value=\"true\"/>\n"
               "      <property name=\"&lt;Alt&gt;F4\" type=\"string\" value=\"close_window_key\"/>\n"
               "    </property>\n"
               "  </property>\n"
               "</channel>\n";
    } else if (windowManager_ == QLatin1String("kwin")) {
        path = configHome() + QStringLiteral("/kglobalshortcutsrc");
        text = "[kwin]\n"
               "Walk Through Windows=none,Alt+Tab,Walk Through Windows\n"
               "Walk Through Windows (Reverse)=none,Alt+Shift+Backtab,Walk Through Windows (Reverse)\n";
    } else {
        return false;
    }
    switchingKeysFree_ = writeConfig(path, text);
    return switchingKeysFree_;
}

bool VirtualSession::switchOffEdgeTiling()
{
    if (windowManager_ != QLatin1String("metacity")) return false;
    QFile file(configHome() + QStringLiteral("/glib-2.0/settings/keyfile"));
    QDir().mkpath(QFileInfo(file).path());
    keyfileSettings_ = file.open(QIODevice::Append) && file.write("[org/gnome/metacity]\nedge-tiling=false\n") > 0 && file.flush();
    return keyfileSettings_;
}

bool VirtualSession::startWindowManager()
{
    QProcessEnvironment env = env_;
    if (windowManager_ == QLatin1String("openbox")) {
        startOpenbox();
    } else if (windowManager_ == QLatin1String("xfwm4")) {
        launch(QStringLiteral("xfwm4"), {QStringLiteral("--compositor=off"), QStringLiteral("--sm-client-disable")});
    } else if (windowManager_ == QLatin1String("kwin")) {
        // Xvfb has no GL worth compositing with.
        env.insert(QStringLiteral("KWIN_COMPOSE"), QStringLiteral("N"));
        launch(QStringLiteral("kwin_x11"), {}, env);
    } else if (windowManager_ == QLatin1String("mutter")) {
        launch(QStringLiteral("mutter"), {QStringLiteral("--x11"), QStringLiteral("--sm-disable")});
    } else if (windowManager_ == QLatin1String("metacity")) {
        launch(QStringLiteral("metacity"), {QStringLiteral("--sm-disable")});
    }
    if (!waitFor([&] { return run(QStringLiteral("wmctrl"), {QStringLiteral("-m")}, nullptr, 2000) == 0; }, 15000)) {
        error_ = windowManager_ + QStringLiteral(" did not start");
        return false;
    }
    return true;
}

bool VirtualSession::startXvfb()
{
    // Xvfb picks a free display number itself and writes it to a pipe once it is ready, so
    // parallel sessions (and other users of the machine) never collide.
    int ready[2];
    if (pipe(ready) != 0) {
        error_ = QStringLiteral("no pipe for Xvfb");
        return false;
    }
    fcntl(ready[0], F_SETFD, FD_CLOEXEC);
    QProcess* xvfb = launch(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QString::number(ready[1]),
                                                    QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("4880x1440x24"),
                                                    QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-noreset")});
    ::close(ready[1]);
    QByteArray number;
    QDeadlineTimer deadline(10000);
    while (!number.endsWith('\n') && !deadline.hasExpired() && xvfb->state() != QProcess::NotRunning) {
        pollfd p{ready[0], POLLIN, 0};
        if (poll(&p, 1, 100) <= 0) continue;
        char buffer[16];
        const ssize_t n = ::read(ready[0], buffer, sizeof buffer);
        if (n <= 0) break;
        number.append(buffer, n);
    }
    ::close(ready[0]);
    if (!number.endsWith('\n')) {
        error_ = QStringLiteral("Xvfb did not start: %1").arg(QString::fromLocal8Bit(xvfb->readAllStandardError()));
        return false;
    }
    display_ = QStringLiteral(":%1").arg(number.trimmed().toInt());
    env_.insert(QStringLiteral("DISPLAY"), display_);
    return true;
}

void VirtualSession::startOpenbox()
{
    const QString rc = dir_.filePath(QStringLiteral("openbox-rc.xml"));
    QFile file(rc);
    file.open(QIODevice::WriteOnly);
    file.write(OpenboxConfig);
    file.close();
    launch(QStringLiteral("openbox"), {QStringLiteral("--config-file"), rc});
}

bool VirtualSession::setUpMonitors()
{
    // Monitors set before the window manager runs do not take effect.
    run(QStringLiteral("xrandr"), {QStringLiteral("--setmonitor"), QStringLiteral("LEFT"), QStringLiteral("1440/381x900/238+0+0"), QStringLiteral("screen")});
    run(QStringLiteral("xrandr"), {QStringLiteral("--setmonitor"), QStringLiteral("RIGHT"), QStringLiteral("3440/910x1440/381+1440+0"), QStringLiteral("none")});
    if (!waitFor([&] { return output(QStringLiteral("xrandr"), {QStringLiteral("--listmonitors")}).startsWith(QLatin1String("Monitors: 2")); })) {
        error_ = QStringLiteral("the two monitors could not be set up");
        return false;
    }
    return true;
}

bool VirtualSession::hasSelectionOwner(const QString& selection)
{
    xcb_connection_t* c = xcb_connect(display_.toLocal8Bit().constData(), nullptr);
    bool owned = false;
    if (!xcb_connection_has_error(c)) {
        const QByteArray name = selection.toLatin1();
        auto* atom = xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, name.size(), name.constData()), nullptr);
        if (atom) {
            auto* owner = xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, atom->atom), nullptr);
            owned = owner && owner->owner != XCB_NONE;
            free(owner);
        }
        free(atom);
    }
    xcb_disconnect(c);
    return owned;
}

bool VirtualSession::startTray()
{
    launch(QStringLiteral("trayer"), {QStringLiteral("--edge"), QStringLiteral("bottom"), QStringLiteral("--align"),
                                     QStringLiteral("right"), QStringLiteral("--widthtype"), QStringLiteral("request"),
                                     QStringLiteral("--height"), QStringLiteral("24"), QStringLiteral("--SetDockType"),
                                     QStringLiteral("true"), QStringLiteral("--SetPartialStrut"), QStringLiteral("true"),
                                     QStringLiteral("--monitor"), QStringLiteral("primary")});
    if (!waitFor([&] { return hasSelectionOwner(QStringLiteral("_NET_SYSTEM_TRAY_S0")); })) {
        error_ = QStringLiteral("the system tray did not start");
        return false;
    }
    return true;
}


void VirtualSession::key(const QString& keys)
{
    run(QStringLiteral("xdotool"), {QStringLiteral("key"), QStringLiteral("--clearmodifiers"), keys});
}

void VirtualSession::click(int x, int y)
{
    run(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), QString::number(x), QString::number(y),
                                    QStringLiteral("click"), QStringLiteral("1")});
}

QStringList VirtualSession::findWindows(const QString& titlePattern)
{
    const QString out = output(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                          QStringLiteral("--name"), titlePattern});
    // xdotool also reports, among the ids, the X errors of windows that vanished while it searched.
    static const QRegularExpression id(QStringLiteral("^\\d+$"));
    return out.split('\n', Qt::SkipEmptyParts).filter(id);
}

QRect VirtualSession::windowGeometry(const QString& windowId)
{
    const QString out = output(QStringLiteral("xwininfo"), {QStringLiteral("-id"), windowId});
    auto number = [&](const char* label) {
        const auto match = QRegularExpression(QString::fromLatin1(label) + QStringLiteral(":\\s+(-?\\d+)")).match(out);
        return match.hasMatch() ? match.captured(1).toInt() : 0;
    };
    return QRect(number("Absolute upper-left X"), number("Absolute upper-left Y"), number("Width"), number("Height"));
}

QMargins VirtualSession::frameExtents(const QString& windowId)
{
    const QString out = output(QStringLiteral("xprop"), {QStringLiteral("-id"), windowId, QStringLiteral("_NET_FRAME_EXTENTS")});
    const auto match = QRegularExpression(QStringLiteral("= (\\d+), (\\d+), (\\d+), (\\d+)")).match(out);
    if (!match.hasMatch()) return {};
    return QMargins(match.captured(1).toInt(), match.captured(3).toInt(), match.captured(2).toInt(), match.captured(4).toInt());
}

QRect VirtualSession::frameGeometry(const QString& windowId)
{
    return windowGeometry(windowId).marginsAdded(frameExtents(windowId));
}

void VirtualSession::mouseDown(int x, int y, int button)
{
    run(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), QString::number(x), QString::number(y),
                                    QStringLiteral("mousedown"), QString::number(button)});
}

void VirtualSession::mouseMove(int x, int y)
{
    run(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), QString::number(x), QString::number(y)});
}

void VirtualSession::mouseUp(int button)
{
    run(QStringLiteral("xdotool"), {QStringLiteral("mouseup"), QString::number(button)});
}

bool VirtualSession::screenshot(const QString& path)
{
    // The root window's pixels in one request. ImageMagick's import reads every window on
    // its own and takes over 20 s under a compositing window manager (mutter).
    xcb_connection_t* c = xcb_connect(display_.toLocal8Bit().constData(), nullptr);
    bool saved = false;
    if (!xcb_connection_has_error(c)) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
        auto* reply = xcb_get_image_reply(c,
                                          xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0, screen->width_in_pixels,
                                                        screen->height_in_pixels, ~0u),
                                          nullptr);
        // The session's screen is 24 bits deep, stored in 32-bit pixels.
        const int width = screen->width_in_pixels, height = screen->height_in_pixels;
        if (reply && reply->depth == 24 && xcb_get_image_data_length(reply) >= width * height * 4) {
            const QImage image(xcb_get_image_data(reply), width, height, width * 4, QImage::Format_RGB32);
            // Light compression: a screenshot is written often and looked at rarely.
            saved = image.save(path, "PNG", 80);
        }
        free(reply);
    }
    xcb_disconnect(c);
    return saved;
}

OrloProcess::OrloProcess(ProcessSession& session, QStringList args, const QProcessEnvironment& environment)
    : OrloProcess(ProcessSession::builtProgram(QStringLiteral("orlo")), session, std::move(args), environment)
{
}

OrloProcess::OrloProcess(const QString& program, ProcessSession& session, QStringList args,
                         const QProcessEnvironment& environment)
    : session_(session)
{
    QProcessEnvironment env = session.environment();
    env.insert(environment);
    env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("orlo.*.debug=true"));
    env.insert(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
    process_ = session.launch(program, args, env, QProcess::MergedChannels);
}

OrloProcess::~OrloProcess() { quit(); }

QString OrloProcess::log()
{
    log_ += QString::fromLocal8Bit(process_->readAll());
    return log_;
}

bool OrloProcess::waitForLine(const QString& pattern, int timeoutMs)
{
    const QRegularExpression re(pattern);
    return ProcessSession::waitFor([&] { return re.match(log()).hasMatch(); }, timeoutMs);
}

bool OrloProcess::waitForTray(QRect* trayGeometry, int timeoutMs)
{
    const QRegularExpression re(QStringLiteral("tray icon shown at (-?\\d+),(-?\\d+) (\\d+)x(\\d+)"));
    QRegularExpressionMatch match;
    const bool shown = ProcessSession::waitFor([&] {
        match = re.match(log());
        return match.hasMatch();
    }, timeoutMs);
    if (shown && trayGeometry)
        *trayGeometry = QRect(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt(), match.captured(4).toInt());
    return shown;
}

void OrloProcess::quit()
{
    if (process_->state() == QProcess::NotRunning) return;
    process_->terminate();
    if (!process_->waitForFinished(3000)) process_->kill();
    process_->waitForFinished(1000);
    log();
}

}  // namespace orlo::testing
