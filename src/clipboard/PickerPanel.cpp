#include "clipboard/PickerPanel.h"
#include "app/Symbols.h"
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace orlo {

PickerPanel::PickerPanel(QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
{
    setObjectName(QStringLiteral("OrloClipboardPicker"));
    setWindowTitle(QStringLiteral("Orlo Clipboard"));
    setFixedSize(Width, Height);

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
    // A menu of the panel's own keeps it open; anything else taking over the keyboard closes it.
    if (event->type() == QEvent::WindowDeactivate && isVisible() && !QApplication::activePopupWidget())
        emit deactivated();
    return QWidget::event(event);
}

void PickerPanel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace orlo
