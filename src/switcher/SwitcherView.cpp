#include "switcher/SwitcherView.h"
#include <QWheelEvent>
#include <algorithm>
#include "kit/Symbols.h"
#include "switcher/SwitcherSession.h"
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QRegion>
#include <utility>

namespace orlo {

namespace {
constexpr int Radius = 18;
const QColor ink(255, 255, 255);

QColor faded(QColor c, double alpha)
{
    c.setAlphaF(float(c.alphaF() * alpha));
    return c;
}

QFont sized(int pixels, int weight = QFont::Normal)
{
    QFont f;
    f.setPixelSize(pixels);
    f.setWeight(QFont::Weight(weight));
    return f;
}

void drawDivider(QPainter& p, int y, int width)
{
    p.fillRect(QRect(0, y, width, 1), faded(ink, 0.4 * 0.35));
}
}  // namespace

// Where Orlo can hold the keyboard (X11), the panel is left out of the window manager's hands
// and never takes the focus. Elsewhere it is a frameless window that takes the focus, so that
// the keys typed while it is open reach Orlo.
static Qt::WindowFlags panelFlags(bool takesFocus)
{
    const Qt::WindowFlags common = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
    return takesFocus ? common : common | Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus;
}

SwitcherView::SwitcherView(bool translucent, bool takesFocus, QWidget* parent)
    : QWidget(parent, panelFlags(takesFocus)), translucent_(translucent), takesFocus_(takesFocus)
{
    setObjectName(QStringLiteral("OrloSwitcher"));
    setWindowTitle(QStringLiteral("Orlo Switcher"));
    setAttribute(Qt::WA_ShowWithoutActivating, !takesFocus);
    setAttribute(Qt::WA_TranslucentBackground, translucent_);
    setFocusPolicy(Qt::NoFocus);
}

void SwitcherView::setSession(SwitcherSession* session, std::function<void(const SwitchItem&)> onPick,
                              std::function<void()> onCancel)
{
    disconnect(observer_);
    session_ = session;
    onPick_ = std::move(onPick);
    onCancel_ = std::move(onCancel);
    firstRow_ = 0;
    hadFocus_ = false;
    if (!session_) return;
    scrollToSelection();
    observer_ = connect(session_, &SwitcherSession::changed, this, [this] {
        scrollToSelection();
        update();
    });
}

QString SwitcherView::emptyText() const
{
    if (session_ && !session_->query().isEmpty()) return tr("No matches");
#ifdef Q_OS_MACOS
    return tr("No windows on this Space");
#else
    return tr("No windows on this desktop");
#endif
}

QString SwitcherView::hintText() const
{
    if (session_ && session_->sticky()) return tr("↩ switch   ⎋ cancel   ⌫ edit search");
    return tr("Release to switch   ⇧ back   type to search   ⎋ cancel");
}

QRect SwitcherView::itemsArea() const
{
    return QRect(0, SearchHeight + 1, width(), height() - SearchHeight - HintHeight - 2);
}

QRect SwitcherView::itemRect(int index) const
{
    const QRect area = itemsArea();
    if (session_->layout() == SwitcherSettings::Layout::List) {
        const int row = index - firstRow_;
        return QRect(area.left() + Spacing, area.top() + Spacing + row * RowHeight, area.width() - 2 * Spacing, RowHeight);
    }
    const int columns = session_->columns();
    const int row = index / columns - firstRow_, column = index % columns;
    const int used = columns * TileWidth + (columns - 1) * Spacing;
    const int left = area.left() + (area.width() - used) / 2;
    return QRect(left + column * (TileWidth + Spacing), area.top() + 12 + row * (TileHeight + Spacing), TileWidth, TileHeight);
}

// The desktop's selection colour, as every other list of the user's shows it.
QColor SwitcherView::accent() const { return palette().color(QPalette::Active, QPalette::Highlight); }

void SwitcherView::wheelEvent(QWheelEvent* event)
{
    if (!session_) return;
    wheelAngle_ += event->angleDelta().y();
    const int notches = wheelAngle_ / 120;  // one row a notch; touchpads send parts of one
    wheelAngle_ -= notches * 120;
    const bool list = session_->layout() == SwitcherSettings::Layout::List;
    const int count = int(session_->filtered().size());
    const int rows = list ? count : (count + session_->columns() - 1) / session_->columns();
    const int visible = list ? VisibleRows : VisibleTileRows;
    const int first = std::clamp(firstRow_ - notches, 0, std::max(0, rows - visible));
    if (first != firstRow_) {
        firstRow_ = first;
        update();
    }
    event->accept();
}

void SwitcherView::scrollToSelection()
{
    if (!session_ || session_->filtered().isEmpty()) {
        firstRow_ = 0;
        return;
    }
    const bool list = session_->layout() == SwitcherSettings::Layout::List;
    const int selectedRow = list ? session_->selection() : session_->selection() / session_->columns();
    const int visible = list ? VisibleRows : VisibleTileRows;
    if (selectedRow < firstRow_) firstRow_ = selectedRow;
    if (selectedRow >= firstRow_ + visible) firstRow_ = selectedRow - visible + 1;
}

int SwitcherView::itemAt(const QPoint& point) const
{
    if (!session_ || !itemsArea().contains(point)) return -1;
    for (int i = 0; i < int(session_->filtered().size()); ++i)
        if (itemRect(i).contains(point)) return i;
    return -1;
}

void SwitcherView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    // Without a compositor the window cannot be see-through: cut the corners instead.
    if (!translucent_) {
        QPainterPath path;
        path.addRoundedRect(QRectF(rect()), Radius, Radius);
        setMask(QRegion(path.toFillPolygon().toPolygon()));
    }
}

void SwitcherView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (takesFocus_) activateWindow();
    else pointerPending_ = true;
}

bool SwitcherView::event(QEvent* event)
{
    if (takesFocus_ && event->type() == QEvent::WindowActivate && session_) {
        hadFocus_ = true;
        emit focused();
    }
    // The user went to another window: that cancels, as a click elsewhere does. A panel of an
    // earlier opening that loses the focus late is not this opening's.
    if (takesFocus_ && event->type() == QEvent::WindowDeactivate && hadFocus_ && session_) cancel();
    return QWidget::event(event);
}

void SwitcherView::cancel()
{
    // The callbacks close the panel, which drops them: call a copy.
    if (const auto cancel = onCancel_) cancel();
}

void SwitcherView::mousePressEvent(QMouseEvent* event)
{
    // The callbacks close the panel, which drops them: call copies.
    const int index = itemAt(event->position().toPoint());
    if (!rect().contains(event->position().toPoint())) {
        cancel();
    } else if (index >= 0 && onPick_) {
        const auto pick = onPick_;
        pick(session_->filtered()[index]);
    }
}

void SwitcherView::paintEvent(QPaintEvent*)
{
    // Clicks anywhere else while the switcher is open cancel it. The pointer can be taken
    // only once the window is on the screen, which it is by its first paint.
    if (std::exchange(pointerPending_, false)) grabMouse();
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    if (translucent_) {
        p.setBrush(QColor(28, 28, 30, 225));
        p.setCompositionMode(QPainter::CompositionMode_Source);
        p.drawRoundedRect(QRectF(rect()), Radius, Radius);
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    } else {
        // The mask cuts the corners; every pixel inside it is the panel's.
        p.fillRect(rect(), QColor(36, 36, 38));
    }
    if (!session_) return;

    paintSearch(p);
    drawDivider(p, SearchHeight, width());
    const QList<SwitchItem>& items = session_->filtered();
    const QRect area = itemsArea();
    if (items.isEmpty()) {
        p.setFont(sized(13));
        p.setPen(faded(ink, 0.6));
        p.drawText(area, Qt::AlignCenter, emptyText());
    } else {
        p.save();
        p.setClipRect(area);
        const bool list = session_->layout() == SwitcherSettings::Layout::List;
        const int perRow = list ? 1 : session_->columns();
        const int first = firstRow_ * perRow;
        const int last = std::min(int(items.size()), first + (list ? VisibleRows : VisibleTileRows * perRow));
        for (int i = first; i < last; ++i) {
            if (list)
                paintRow(p, items[i], itemRect(i), i == session_->selection());
            else
                paintTile(p, items[i], itemRect(i), i == session_->selection());
        }
        p.restore();
    }
    drawDivider(p, height() - HintHeight - 1, width());
    p.setFont(sized(11));
    p.setPen(faded(ink, 0.6));
    p.drawText(QRect(0, height() - HintHeight, width(), HintHeight), Qt::AlignCenter, hintText());
}

void SwitcherView::paintSearch(QPainter& p)
{
    const QRect line(16, 0, width() - 32, SearchHeight);
    p.drawPixmap(QRect(line.left(), line.center().y() - 9, 18, 18), symbolPixmap(QStringLiteral("magnifyingglass"), 36, faded(ink, 0.7)));
    const QString count = QString::number(session_->filtered().size());
    p.setFont(sized(13));
    const QFontMetrics countMetrics(p.font());
    const int countWidth = countMetrics.horizontalAdvance(count);
    p.setPen(faded(ink, 0.5));
    p.drawText(QRect(line.right() - countWidth, 0, countWidth, SearchHeight), Qt::AlignVCenter | Qt::AlignRight, count);

    const QRect text(line.left() + 28, 0, line.width() - 28 - countWidth - 12, SearchHeight);
    p.setFont(sized(17));
    const QFontMetrics metrics(p.font());
    const QString query = metrics.elidedText(session_->query(), Qt::ElideLeft, text.width() - 4);
    if (query.isEmpty()) {
        p.setPen(faded(ink, 0.45));
        p.drawText(text.adjusted(4, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, tr("Type to search windows and tabs"));
    } else {
        p.setPen(ink);
        p.drawText(text, Qt::AlignVCenter | Qt::AlignLeft, query);
    }
    const int caretX = text.left() + (query.isEmpty() ? 0 : metrics.horizontalAdvance(query) + 1);
    p.fillRect(QRect(caretX, text.center().y() - 8, 2, 17), accent());
}

void SwitcherView::paintRow(QPainter& p, const SwitchItem& item, const QRect& r, bool selected)
{
    if (selected) {
        p.setPen(Qt::NoPen);
        p.setBrush(faded(accent(), 0.85));
        p.drawRoundedRect(QRectF(r), 10, 10);
    }
    const QRect content = r.adjusted(12, 0, -12, 0);
    const QRect icon(content.left(), r.center().y() - 14, 28, 28);
    item.icon.paint(&p, icon);
    paintBadge(p, item, icon);
    const int left = icon.right() + 1 + 10;
    const QRect textArea(left, r.top(), content.right() - left, r.height());
    p.setFont(sized(13, QFont::Medium));
    const QFontMetrics titleMetrics(p.font());
    p.setPen(ink);
    p.drawText(QRect(textArea.left(), r.top() + 5, textArea.width(), 19), Qt::AlignLeft | Qt::AlignVCenter,
               titleMetrics.elidedText(item.title, Qt::ElideRight, textArea.width()));
    p.setFont(sized(11));
    p.setPen(faded(ink, 0.8));
    p.drawText(QRect(textArea.left(), r.top() + 24, textArea.width(), 16), Qt::AlignLeft | Qt::AlignVCenter,
               QFontMetrics(p.font()).elidedText(item.appName, Qt::ElideRight, textArea.width()));
}

void SwitcherView::paintTile(QPainter& p, const SwitchItem& item, const QRect& r, bool selected)
{
    p.setPen(Qt::NoPen);
    p.setBrush(selected ? faded(accent(), 0.85) : faded(ink, 0.04));
    p.drawRoundedRect(QRectF(r), 12, 12);
    const QRect content = r.adjusted(8, 8, -8, -8);
    const QRect icon(content.center().x() - 26, content.top(), 52, 52);
    item.icon.paint(&p, icon);
    paintBadge(p, item, icon);
    p.setFont(sized(11, QFont::Medium));
    p.setPen(ink);
    const QRect title(content.left(), icon.bottom() + 1 + 6, content.width(), 16);
    p.drawText(title, Qt::AlignHCenter | Qt::AlignVCenter, QFontMetrics(p.font()).elidedText(item.title, Qt::ElideRight, title.width()));
    p.setFont(sized(10));
    p.setPen(faded(ink, 0.8));
    const QRect app(content.left(), title.bottom() + 1 + 4, content.width(), 14);
    p.drawText(app, Qt::AlignHCenter | Qt::AlignVCenter, QFontMetrics(p.font()).elidedText(item.appName, Qt::ElideRight, app.width()));
}

void SwitcherView::paintBadge(QPainter& p, const SwitchItem& item, const QRect& icon)
{
    const QString symbol = item.isTab() ? QStringLiteral("square.on.square") : item.isMinimized() ? QStringLiteral("minus") : QString();
    if (symbol.isEmpty()) return;
    constexpr int glyph = 10, padding = 4, side = glyph + 2 * padding;
    const QRect badge(icon.right() + 1 - side + 4, icon.bottom() + 1 - side + 4, side, side);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 0, 0, int(0.35 * 255)));
    p.drawRoundedRect(QRectF(badge), 5, 5);
    p.drawPixmap(badge.adjusted(padding, padding, -padding, -padding), symbolPixmap(symbol, glyph * 2, ink));
}

}  // namespace orlo
