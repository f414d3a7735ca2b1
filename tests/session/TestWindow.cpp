// orlo-test-window: a plain window of another process for session tests. It prints
// "ready <window id>" once shown, "key <text> <modifiers>" for each key press it receives,
// and "text <contents>" whenever its line edit changes (what a paste brought in). On Wayland,
// where no other program can ask which window is active, it also prints "active <title>"
// whenever one of its windows gets the keyboard focus.
// A fourth argument opens that many more plain windows, titled "<title> 1", "<title> 2"...
// With ORLO_TEST_WINDOW_UNDECORATED set, the window asks the window manager for no
// decorations, as a client that draws its own title bar and shadows does.
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <QWindow>
#include <QVBoxLayout>
#include <QWidget>
#include <cstdio>
#include <memory>
#include <vector>

class KeyLog : public QObject {
protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress) {
            auto* key = static_cast<QKeyEvent*>(event);
            printf("key %s %d\n", qPrintable(QKeySequence(key->key()).toString()), int(key->modifiers() >> 25));
            fflush(stdout);
        }
        return false;
    }
};

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QString title = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("Orlo Test Window");
    QWidget window;
    window.setWindowTitle(title);
    if (qEnvironmentVariableIsSet("ORLO_TEST_WINDOW_UNDECORATED")) window.setWindowFlag(Qt::FramelessWindowHint);
    auto* edit = new QLineEdit(&window);
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(edit);
    window.resize(argc > 3 ? atoi(argv[2]) : 400, argc > 3 ? atoi(argv[3]) : 300);
    KeyLog log;
    edit->installEventFilter(&log);
    QObject::connect(edit, &QLineEdit::textChanged, [](const QString& text) {
        printf("text %s\n", qPrintable(text));
        fflush(stdout);
    });
    // After "ready", which readers expect on the first line.
    bool ready = false;
    const bool onWayland = QGuiApplication::platformName() == QLatin1String("wayland");
    auto reportFocus = [&ready, onWayland](QWindow* focused) {
        if (!onWayland || !ready || !focused) return;
        printf("active %s\n", qPrintable(focused->title()));
        fflush(stdout);
    };
    QObject::connect(&app, &QGuiApplication::focusWindowChanged, reportFocus);
    std::vector<std::unique_ptr<QWidget>> more;
    for (int i = 1; argc > 4 && i <= atoi(argv[4]); ++i) {
        more.push_back(std::make_unique<QWidget>());
        more.back()->setWindowTitle(QStringLiteral("%1 %2").arg(title).arg(i));
        more.back()->resize(320, 200);
        more.back()->show();
    }
    window.show();
    edit->setFocus();
    QTimer::singleShot(0, [&] {
        printf("ready %llu\n", (unsigned long long)window.winId());
        fflush(stdout);
        ready = true;
        reportFocus(QGuiApplication::focusWindow());
    });
    return app.exec();
}
