// orlo-test-clipboard: a clipboard owner of another process for session tests, offering
// several targets at once. It prints "ready" once it owns the CLIPBOARD selection and exits
// when another client takes it.
//   orlo-test-clipboard [--text TEXT] [--html HTML] [--png FILE] [--type NAME=VALUE]...
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QMimeData>
#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    auto* mime = new QMimeData;
    const QStringList args = app.arguments().mid(1);
    for (qsizetype i = 0; i + 1 < args.size(); i += 2) {
        const QString& option = args[i];
        const QString& value = args[i + 1];
        if (option == "--text") {
            mime->setText(value);
        } else if (option == "--html") {
            mime->setHtml(value);
        } else if (option == "--png") {
            QFile file(value);
            if (!file.open(QIODevice::ReadOnly)) return 2;
            mime->setData("image/png", file.readAll());
        } else if (option == "--type") {
            const qsizetype eq = value.indexOf('=');
            mime->setData(value.left(eq), value.mid(eq + 1).toUtf8());
        } else {
            fprintf(stderr, "unknown option %s\n", qPrintable(option));
            return 2;
        }
    }
    QClipboard* clipboard = QGuiApplication::clipboard();
    QObject::connect(clipboard, &QClipboard::changed, &app, [&](QClipboard::Mode mode) {
        if (mode == QClipboard::Clipboard && !clipboard->ownsClipboard()) app.quit();
    });
    clipboard->setMimeData(mime, QClipboard::Clipboard);
    printf("ready\n");
    fflush(stdout);
    return app.exec();
}
