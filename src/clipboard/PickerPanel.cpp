#include "clipboard/PickerPanel.h"
#include "kit/Symbols.h"
#include "clipboard/ClipboardLog.h"
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMouseEvent>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <QWindow>

namespace orlo {

// Where windows are placed and focused by a window manager (X11), the panel is left out of its
// hands: the window the user came from keeps the focus, so the paste lands there at once, and
// the panel holds the keyboard while it is open instead, so no key typed goes elsewhere even
// before the panel is drawn. Elsewhere it is a floating tool window that takes the focus.
#ifdef Q_OS_MACOS
static constexpr Qt::WindowFlags PanelFlags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
static constexpr bool HoldsKeyboard = false;
#else
static constexpr Qt::WindowFlags PanelFlags = Qt::Tool | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint;
static constexpr bool HoldsKeyboard = true;
#endif

PickerPanel::PickerPanel(QWidget* parent) : QWidget(parent, PanelFlags)
{
    setObjectName(QStringLiteral("OrloClipboardPicker"));
    setWindowTitle(QStringLiteral("Orlo Clipboard"));
    setFixedSize(Width, Height);
    holdKeyboard_.setInterval(HoldRetryMs);
    holdKeyboard_.setTimerType(Qt::PreciseTimer);
    connect(&holdKeyboard_, &QTimer::timeout, this, &PickerPanel::tryToHoldKeyboard);

    search_ = new QLineEdit(this);
    search_->setPlaceholderText(tr("Search clipboard"));
    search_->setFrame(false);
    search_->setClearButtonEnabled(false);
    search_->addAction(symbolIcon(QStringLiteral("magnifyingglass")), QLineEdit::LeadingPosition);
    QFont larger = search_->font();
    larger.setPointSizeF(larger.pointSizeF() * 1.15);
    search_->setFont(larger);
    search_->setMinimumHeight(40);

    list_ = new QListView(this);
    list_->setObjectName(QStringLiteral("clipRows"));
    list_->setUniformItemSizes(true);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->setMouseTracking(true);

    empty_ = new QLabel(tr("Nothing copied yet"), this);
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setEnabled(false);

    stack_ = new QStackedWidget(this);
    stack_->addWidget(list_);
    stack_->addWidget(empty_);

    hint_ = new QLabel(tr("Allow Accessibility in Orlo settings to paste automatically."), this);
    hint_->setWordWrap(true);
    hint_->setEnabled(false);
    hint_->setContentsMargins(12, 6, 12, 8);
    hint_->hide();

    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(1, 1, 1, 1);
    column->setSpacing(0);
    auto* top = new QVBoxLayout;
    top->setContentsMargins(8, 4, 8, 4);
    top->addWidget(search_);
    column->addLayout(top);
    column->addWidget(line);
    column->addWidget(stack_, 1);
    column->addWidget(hint_);
}

void PickerPanel::showEmptyHistory(bool empty) { stack_->setCurrentWidget(empty ? static_cast<QWidget*>(empty_) : list_); }

void PickerPanel::showAccessibilityHint(bool show) { hint_->setVisible(show); }

bool PickerPanel::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::Show:
        if (HoldsKeyboard) holdKeyboard();
        else activateWindow();
        break;
    case QEvent::Hide:
        holdKeyboard_.stop();
        break;
    case QEvent::WindowActivate:
        emit activated();
        break;
    case QEvent::WindowDeactivate:
        // Holding the keyboard, the panel is active exactly while it holds it.
        if (!HoldsKeyboard && isVisible() && !QApplication::activePopupWidget()) emit deactivated();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void PickerPanel::mousePressEvent(QMouseEvent* event)
{
    // While the panel holds the pointer too, a click anywhere else arrives here.
    if (!rect().contains(event->position().toPoint())) emit deactivated();
}

void PickerPanel::holdKeyboard()
{
    holdClock_.start();
    tryToHoldKeyboard();
    if (isVisible() && !holdingKeyboard_) holdKeyboard_.start();
}

void PickerPanel::tryToHoldKeyboard()
{
    // The server grants the keyboard once no other grab is active (the shortcut's own keys may
    // still be down, or a menu of the panel just closed): it is tried again until then.
    QWindow* window = windowHandle();
    holdingKeyboard_ = window && isVisible() && window->setKeyboardGrabEnabled(true);
    if (holdingKeyboard_) {
        window->setMouseGrabEnabled(true);
        qCDebug(lcClipboard, "picker holds the keyboard");
    }
    if (holdingKeyboard_ || !isVisible() || holdClock_.hasExpired(HoldForMs)) {
        if (!holdingKeyboard_ && isVisible()) qCWarning(lcClipboard, "the picker could not take the keyboard");
        holdKeyboard_.stop();
    }
}

void PickerPanel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace orlo
