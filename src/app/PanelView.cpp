#include "app/PanelView.h"
#include "app/AccessibilityRow.h"
#include "app/AppModel.h"
#include "kit/Permissions.h"
#include "kit/ToggleSwitch.h"
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace orlo {

static QFrame* divider(QWidget* parent)
{
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

PanelView::PanelView(AppModel& model, QWidget* parent)
    : QFrame(parent, Qt::Popup | Qt::FramelessWindowHint), model_(model)
{
    setObjectName(QStringLiteral("OrloPanel"));
    setWindowTitle(QStringLiteral("Orlo Panel"));
    setFrameShape(QFrame::StyledPanel);
    setMinimumWidth(300);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(14, 12, 14, 12);
    column->setSpacing(8);

    for (const auto& module : model_.modules()) {
        auto* row = new QHBoxLayout;
        auto* title = new QLabel(module->title(), this);
        auto* toggle = new ToggleSwitch(this);
        toggle->setObjectName(module->id());
        toggle->setAccessibleName(module->title());
        row->addWidget(title, 1);
        row->addWidget(toggle);
        column->addLayout(row);
        switches_.insert(module->id(), toggle);
        OrloModule* m = module.get();
        connect(toggle, &ToggleSwitch::toggled, this, [this, m](bool on) { model_.setModuleEnabled(*m, on); });
    }

    column->addWidget(divider(this));
    accessibility_ = new QWidget(this);
    auto* axColumn = new QVBoxLayout(accessibility_);
    axColumn->setContentsMargins(0, 0, 0, 0);
    axColumn->addWidget(new AccessibilityRow(model_.permissions(), accessibility_));
    axColumn->addWidget(divider(accessibility_));
    column->addWidget(accessibility_);

    for (const auto& module : model_.modules())
        if (QWidget* rows = module->panelRows()) {
            column->addWidget(rows);
            column->addWidget(divider(this));
        }
    notice_ = new QWidget(this);
    auto* noticeColumn = new QVBoxLayout(notice_);
    noticeColumn->setContentsMargins(0, 0, 0, 0);
    auto* noticeButton = new QPushButton(notice_);
    noticeButton->setObjectName(QStringLiteral("notice"));
    noticeButton->setFlat(true);
    noticeColumn->addWidget(noticeButton);
    noticeColumn->addWidget(divider(notice_));
    notice_->hide();
    column->addWidget(notice_);
    connect(noticeButton, &QPushButton::clicked, this, [this] {
        notice_->hide();
        hide();
        emit noticeClicked();
    });

    auto* commands = new QHBoxLayout;
    auto* preferences = new QPushButton(tr("Preferences"), this);
    auto* quit = new QPushButton(tr("Quit"), this);
    commands->addWidget(preferences);
    commands->addStretch(1);
    commands->addWidget(quit);
    column->addLayout(commands);
    connect(preferences, &QPushButton::clicked, this, [this] {
        hide();
        emit preferencesRequested();
    });
    connect(quit, &QPushButton::clicked, this, &PanelView::quitRequested);

    connect(&model_, &AppModel::revisionChanged, this, &PanelView::refresh);
    connect(&model_.permissions(), &Permissions::accessibilityChanged, this, &PanelView::refresh);
    refresh();
}

void PanelView::refresh()
{
    for (const auto& module : model_.modules()) switches_.value(module->id())->show(module->isEnabled());
    accessibility_->setVisible(!model_.permissions().accessibility());
    adjustSize();
}

void PanelView::showNotice(const QString& text)
{
    if (text.isEmpty()) {
        notice_->hide();
        adjustSize();
        return;
    }
    auto* button = notice_->findChild<QPushButton*>(QStringLiteral("notice"));
    // A push button does not wrap its text: a label inside it does.
    auto* label = button->findChild<QLabel*>();
    if (!label) {
        label = new QLabel(button);
        label->setWordWrap(true);
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        auto* inside = new QVBoxLayout(button);
        inside->setContentsMargins(6, 4, 6, 4);
        inside->addWidget(label);
        label->setMaximumWidth(320);
    }
    label->setText(text);
    button->setMinimumHeight(label->heightForWidth(320) + 8);
    notice_->show();
    adjustSize();
}

void PanelView::toggleAt(const QRect& anchor)
{
    if (isVisible()) {
        hide();
        return;
    }
    if (sinceHidden_.isValid() && sinceHidden_.elapsed() < 250) return;
    refresh();
    // The size the panel will really have: rows shown since the last layout pass, and the
    // minimum width, count too.
    layout()->activate();
    const QSize size = sizeHint().expandedTo(minimumSize());
    QScreen* screen = QGuiApplication::screenAt(anchor.center());
    if (!screen) screen = QGuiApplication::primaryScreen();
    const QRect area = screen->geometry();
    // Below an icon in the upper half of the screen, above one in the lower half.
    QPoint at(anchor.center().x() - size.width() / 2,
              anchor.center().y() < area.center().y() ? anchor.bottom() + 4 : anchor.top() - size.height() - 4);
    if (anchor.isNull()) at = QPoint(area.right() - size.width() - 8, area.top() + 8);
    at.setX(qBound(area.left() + 4, at.x(), area.right() - size.width() - 4));
    at.setY(qBound(area.top() + 4, at.y(), area.bottom() - size.height() - 4));
    move(at);
    QFrame::show();
    activateWindow();
    if (auto* first = switches_.value(model_.modules().front()->id())) first->setFocus();
}

void PanelView::hideEvent(QHideEvent* event)
{
    sinceHidden_.start();
    QFrame::hideEvent(event);
}

}  // namespace orlo
