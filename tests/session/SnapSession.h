#pragma once
// Window snapping in the real application, driven from the outside: a session with Orlo
// running, and windows of another process to snap.
#include "VirtualSession.h"
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>

namespace orlo::testing {

// A window of another process, placed and brought to the front.
struct Window {
    QProcess* process = nullptr;
    QString id;

    Window() = default;
    // An undecorated window draws its title bar itself, as client-side-decorated ones do.
    Window(VirtualSession& session, const QString& title, QRect frame = QRect(300, 280, 402, 325), bool undecorated = false)
    {
        // Drawn at one pixel per point whatever Orlo's scale, so that it takes any size.
        QProcessEnvironment env = session.environment();
        env.insert("QT_ENABLE_HIGHDPI_SCALING", "0");
        env.remove("QT_SCALE_FACTOR");
        if (undecorated) env.insert("ORLO_TEST_WINDOW_UNDECORATED", "1");
        process = session.launch(VirtualSession::builtProgram("orlo-test-window"), {title, "400", "300"}, env);
        QString out;
        VirtualSession::waitFor([&] {
            out += QString::fromLocal8Bit(process->readAllStandardOutput());
            return out.contains('\n');
        });
        id = out.section(' ', 1).trimmed();
        EXPECT_FALSE(id.isEmpty()) << "the test window did not start";
        // mutter and metacity frame a new window a moment after it shows: placed before,
        // it would be placed without its title bar.
        if (!undecorated) {
            EXPECT_TRUE(VirtualSession::waitFor([&] { return session.frameExtents(id).top() > 0; })) << "the window has no title bar";
        }
        place(session, frame);
    }
    void place(VirtualSession& session, const QRect& frame)
    {
        // Qt windows have static gravity: the position is the client's, inside the window
        // manager's decorations.
        const QRect client = frame.marginsRemoved(session.frameExtents(id));
        session.run("wmctrl", {"-i", "-r", id, "-e",
                               QString("10,%1,%2,%3,%4").arg(client.x()).arg(client.y()).arg(client.width()).arg(client.height())});
        activate(session);
        VirtualSession::waitFor([&] { return session.frameGeometry(id) == frame; });
    }
    void activate(VirtualSession& session)
    {
        // Asked again, an active window's request is one --sync does not wait for: a window
        // manager that reaches it late (mutter) stamps the window with a user time newer than
        // the keys pressed since, and turns away the switch they asked for.
        if (session.output("xdotool", {"getactivewindow"}) == id) return;
        session.run("xdotool", {"windowactivate", "--sync", id});
        VirtualSession::waitFor([&] { return session.output("xdotool", {"getactivewindow"}) == id; });
    }
};

class SnapSession : public ::testing::Test {
protected:
    // prepare runs in the session before Orlo starts. A first start keeps Orlo's default keys
    // whatever the window manager keeps of them, as a new user has them.
    static void startSession(QJsonObject settings = {}, const std::function<void()>& prepare = {}, bool firstStart = false)
    {
        session = new VirtualSession;
        // Where the window manager holds the windows it tiles, the user follows Orlo's advice.
        session->switchOffEdgeTiling();
        ASSERT_TRUE(session->start()) << qPrintable(session->error());
        if (prepare) prepare();
        // xfwm4, metacity and mutter switch workspaces on Control-Alt-Left and -Right by
        // default: there the halves are bound to Control-Alt-H and -L. mutter also holds
        // Control-Alt-Super-Left and -Right: there the displays are Control-Alt-P and -N.
        const bool arrowsHeld = !firstStart && QStringList{"xfwm4", "metacity", "mutter"}.contains(session->windowManager());
        const bool displaysHeld = !firstStart && session->windowManager() == "mutter";
        leftKey = arrowsHeld ? "ctrl+alt+h" : "ctrl+alt+Left";
        rightKey = arrowsHeld ? "ctrl+alt+l" : "ctrl+alt+Right";
        previousDisplayKey = displaysHeld ? "ctrl+alt+p" : "ctrl+alt+super+Left";
        nextDisplayKey = displaysHeld ? "ctrl+alt+n" : "ctrl+alt+super+Right";
        if (arrowsHeld) {
            const QJsonObject controlAlt{{"modifiers", 0xC0000}};
            auto binding = [&](int keyCode) {
                QJsonObject shortcut = controlAlt;
                shortcut["keyCode"] = keyCode;
                return QJsonObject{{"shortcut", shortcut}};
            };
            QJsonObject shortcuts{{"leftHalf", binding(4)}, {"rightHalf", binding(37)}};
            if (displaysHeld) {
                shortcuts["previousDisplay"] = binding(35);
                shortcuts["nextDisplay"] = binding(45);
            }
            settings["windows.shortcuts"] =
                QJsonObject{{"$data", QString::fromLatin1(QJsonDocument(shortcuts).toJson().toBase64())}};
        }
        if (!settings.isEmpty()) {
            QDir().mkpath(session->configHome() + "/Orlo");
            QFile file(session->configHome() + "/Orlo/settings.json");
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QJsonDocument(settings).toJson());
        }
        orlo = new OrloProcess(*session, {}, orloEnvironment);
        ASSERT_TRUE(orlo->waitForLine("orlo.windows: hot keys: \\d+ registered")) << qPrintable(orlo->log());
    }
    static void SetUpTestSuite() { startSession(); }
    static void TearDownTestSuite()
    {
        delete orlo;
        delete session;
        orlo = nullptr;
        session = nullptr;
        orloEnvironment = {};  // a suite's variables for Orlo, its scale among them, end with it
    }

    // Presses keys and waits until the window stands at a frame.
    static bool snapsTo(const Window& window, const QString& keys, const QRect& frame)
    {
        session->key(keys);
        return waitForFrame(window, frame);
    }
    static bool waitForFrame(const Window& window, const QRect& frame)
    {
        const bool reached = VirtualSession::waitFor([&] { return session->frameGeometry(window.id) == frame; }, 3000);
        if (!reached) {
            const QRect at = session->frameGeometry(window.id);
            std::cerr << "window at " << at.x() << "," << at.y() << " " << at.width() << "x" << at.height() << "\n";
        }
        return reached;
    }
    // A title-bar drag as a hand makes it: small steps first, so that the window is seen to
    // move, then to the target.
    static void dragTitleBar(const Window& window, QPoint to, int button = 1)
    {
        dragStart = orlo->log().size();
        const QRect frame = session->frameGeometry(window.id);
        // Within the title bar, whatever its height: the client starts below it.
        const QPoint grab(frame.center().x(), frame.y() + std::min(10, session->frameExtents(window.id).top() / 2));
        const bool moved = startDrag(grab, QPoint(-20, 10), button,
                                     [&] { return session->frameGeometry(window.id).topLeft() != frame.topLeft(); });
        if (!moved) std::cerr << "the window did not follow the pointer\n";
        session->mouseMove(to.x(), to.y());
    }
    // Presses at a point of a window's frame and moves on in three small steps, until the
    // window manager has started what the frame there does (a move, a resize).
    static bool startDrag(QPoint at, QPoint step, int button, const std::function<bool()>& started)
    {
        // mutter reads the pointer's motion when it draws its next frame, a press at once: a
        // press that comes with the move onto the frame finds it still thinking the pointer is
        // elsewhere, and nothing starts. Under Xvfb its frames take a few hundred
        // milliseconds, more when loaded, and nothing outside it tells when one is drawn. A hand
        // rests on the frame before it presses, and presses again when nothing followed (a
        // second apart, which no window manager takes for a double click).
        session->mouseMove(at.x(), at.y());
        for (int attempt = 1; attempt <= 3; ++attempt) {
            VirtualSession::waitFor([] { return false; }, attempt == 1 ? 500 : 1000);
            session->mouseDown(at.x(), at.y(), button);
            for (int n = 1; n <= 3; ++n) {
                session->mouseMove(at.x() + step.x() * n, at.y() + step.y() * n);
                VirtualSession::waitFor([] { return false; }, 80);
            }
            // A busy window manager may take a while to start.
            if (VirtualSession::waitFor(started, 1000)) return true;
            session->mouseMove(at.x(), at.y());
            session->mouseUp(button);
        }
        return false;
    }
    // Whether the window manager has put the window in a _NET_WM_STATE, e.g. "FULLSCREEN".
    static bool hasState(const Window& window, const QString& state)
    {
        return session->output("xprop", {"-id", window.id, "_NET_WM_STATE"}).contains("_NET_WM_STATE_" + state);
    }
    // Whether Orlo has seen the last drag end, and that it snaps nothing: every motion of the
    // drag reached it before.
    static bool endedWithoutSnap()
    {
        return VirtualSession::waitFor([] { return orlo->log().mid(dragStart).contains("orlo.windows: mouse up: no snap"); });
    }
    // Whether Orlo has previewed an area since the last drag began, covering a frame (in
    // points) when one is given.
    static bool previewShown(const QString& area, int timeoutMs = 3000, const QRect& frame = {})
    {
        QString pattern = "orlo.windows: preview " + area + " on display \\d+ at ";
        if (!frame.isNull())
            pattern += QString("%1,%2 %3x%4\n").arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height());
        const QRegularExpression re(pattern);
        return VirtualSession::waitFor([&] { return re.match(orlo->log().mid(dragStart)).hasMatch(); }, timeoutMs);
    }

    // A screenshot once the preview is painted: Orlo tells of a preview as soon as it is
    // shown, and a busy machine paints it a little later. Tried for up to two seconds.
    static QImage screenshotOnce(const std::function<bool(const QImage&)>& painted, const QString& name)
    {
        const QString shot = VirtualSession::screenshotPath(name);
        QImage image;
        VirtualSession::waitFor([&] { return session->screenshot(shot) && painted(image = QImage(shot)); }, 2000);
        std::cout << "preview screenshot: " << qPrintable(shot) << "\n";
        return image;
    }
    static bool accent(const QImage& image, QPoint p)
    {
        const QColor c = image.pixelColor(p);
        return c.blue() > c.red() + 40;
    }

    static inline qsizetype dragStart = 0;
    static inline QString leftKey, rightKey, previousDisplayKey, nextDisplayKey;
    static inline QProcessEnvironment orloEnvironment;
    static inline VirtualSession* session = nullptr;
    static inline OrloProcess* orlo = nullptr;
};

}  // namespace orlo::testing
