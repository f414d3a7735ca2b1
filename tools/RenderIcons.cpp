// Renders an SVG icon as the PNG sizes an icon theme keeps beside the scalable one, at build
// time: render-icons <svg> <theme folder> <icon name> <size>... writes
// <theme folder>/<size>x<size>/apps/<icon name>.png for each size.
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 5) {
        fprintf(stderr, "usage: %s <svg> <theme folder> <icon name> <size>...\n", argv[0]);
        return 2;
    }
    QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
    if (!svg.isValid()) {
        fprintf(stderr, "%s: cannot read %s\n", argv[0], argv[1]);
        return 1;
    }
    const QDir theme(QString::fromLocal8Bit(argv[2]));
    const QString name = QString::fromLocal8Bit(argv[3]);
    for (int i = 4; i < argc; ++i) {
        const int size = QByteArray(argv[i]).toInt();
        if (size <= 0) {
            fprintf(stderr, "%s: not a size: %s\n", argv[0], argv[i]);
            return 2;
        }
        const QString folder = QStringLiteral("%1x%1/apps").arg(size);
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        svg.render(&painter, QRectF(0, 0, size, size));
        painter.end();
        const QString file = theme.filePath(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
        if (!theme.mkpath(folder) || !image.save(file, "PNG")) {
            fprintf(stderr, "%s: cannot write %s\n", argv[0], qPrintable(file));
            return 1;
        }
    }
    return 0;
}
