#include "platform/x11/X11Pasteboard.h"
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace orlo::x11 {

X11Pasteboard::X11Pasteboard(QObject* parent) : QObject(parent)
{
    connect(QGuiApplication::clipboard(), &QClipboard::changed, this, [this](QClipboard::Mode mode) {
        if (mode == QClipboard::Clipboard) ++changeCount_;
    });
}

const QMimeData* X11Pasteboard::contents() const { return QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard); }

void X11Pasteboard::write(const Contents& contents)
{
    QGuiApplication::clipboard()->setMimeData(mimeData(contents), QClipboard::Clipboard);
}

}  // namespace orlo::x11
