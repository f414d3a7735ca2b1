// orlo-test-shot <file.png>: saves what KWin shows on all its screens, through KWin's own
// screenshot service on the session bus, for the session tests' screenshots under Plasma.
// KWin answers with the picture's size and layout and then writes its pixels into a pipe.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>
#include <QImage>
#include <QVariantMap>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Exactly size bytes, or fewer when the pipe ends first.
QByteArray readExactly(int fd, qsizetype size)
{
    QByteArray data(size, Qt::Uninitialized);
    qsizetype have = 0;
    while (have < size) {
        const ssize_t n = read(fd, data.data() + have, size_t(size - have));
        if (n > 0) have += n;
        else if (n == 0 || errno != EINTR) break;
    }
    data.truncate(have);
    return data;
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        fprintf(stderr, "usage: orlo-test-shot FILE.png\n");
        return 2;
    }
    int pipe[2];
    if (pipe2(pipe, O_CLOEXEC) != 0) return 1;
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), QStringLiteral("/org/kde/KWin/ScreenShot2"),
                                                       QStringLiteral("org.kde.KWin.ScreenShot2"), QStringLiteral("CaptureWorkspace"));
    call << QVariantMap() << QVariant::fromValue(QDBusUnixFileDescriptor(pipe[1]));
    // KWin answers with the picture's size and layout, then writes its pixels.
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 10000);
    close(pipe[1]);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        fprintf(stderr, "orlo-test-shot: %s\n", qPrintable(reply.errorMessage()));
        return 1;
    }
    const QVariantMap about = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    const int width = about.value(QStringLiteral("width")).toInt();
    const int height = about.value(QStringLiteral("height")).toInt();
    const int stride = about.value(QStringLiteral("stride")).toInt();
    const auto format = QImage::Format(about.value(QStringLiteral("format")).toInt());
    const QByteArray pixels = readExactly(pipe[0], qsizetype(stride) * height);
    close(pipe[0]);
    if (width <= 0 || height <= 0 || pixels.size() < qsizetype(stride) * height) {
        fprintf(stderr, "orlo-test-shot: %d bytes for %dx%d\n", int(pixels.size()), width, height);
        return 1;
    }
    const QImage image(reinterpret_cast<const uchar*>(pixels.constData()), width, height, stride, format);
    return image.save(QString::fromLocal8Bit(argv[1]), "PNG") ? 0 : 1;
}
