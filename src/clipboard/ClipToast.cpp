#include "clipboard/ClipToast.h"
#include "clipboard/ClipboardLog.h"
#include <QCursor>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QTimer>

namespace orlo {

namespace {
constexpr int Inner = 14;  // around the text
constexpr int Outer = 9;   // around the background
}  // namespace

ClipToast::ClipToast(QString text)
    : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowTransparentForInput
                           | Qt::WindowDoesNotAcceptFocus),
      text_(std::move(text))
{
    setObjectName(QStringLiteral("OrloClipToast"));
    setWindowTitle(text_);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
    QFont f = font();
    f.setPointSizeF(13);
    setFont(f);
    const QSize textSize = fontMetrics().size(Qt::TextSingleLine, text_);
    setFixedSize(textSize + QSize(2 * (Inner + Outer), 2 * (Inner + Outer)));
    // A shape rather than a translucent window: it needs no compositing manager.
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect()).adjusted(Outer, Outer, -Outer, -Outer), 10, 10);
    setMask(QRegion(shape.toFillPolygon().toPolygon()));
}

ClipToast* ClipToast::show(const QString& text)
{
    auto* toast = new ClipToast(text);
    const QPoint pointer = QCursor::pos();
    QRect frame(QPoint(), toast->size());
    frame.moveCenter(pointer);
    // Just below the pointer, and on its screen.
    frame.moveTop(pointer.y() + 16);
    if (QScreen* screen = QGuiApplication::screenAt(pointer)) {
        const QRect area = screen->availableGeometry();
        frame.moveBottom(std::min(frame.bottom(), area.bottom()));
        frame.moveLeft(std::clamp(frame.left(), area.left(), std::max(area.left(), area.right() - frame.width())));
    }
    toast->move(frame.topLeft());
    toast->QWidget::show();
    toast->raise();
    QTimer::singleShot(DurationMs, toast, &QWidget::close);
    qCDebug(lcClipboard, "toast: %s", qPrintable(text));
    return toast;
}

void ClipToast::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), QColor(40, 40, 42));
    painter.setPen(Qt::white);
    painter.drawText(rect(), Qt::AlignCenter, text_);
}

}  // namespace orlo
