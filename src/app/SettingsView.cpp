#include "app/SettingsView.h"
#include "app/AppModel.h"
#include "app/GeneralSettings.h"
#include "app/ModuleHeader.h"
#include "kit/Symbols.h"
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QScrollArea>
#include <QStackedWidget>

namespace orlo {

static constexpr int SelectionRole = Qt::UserRole;

SettingsView::SettingsView(AppModel& model, QWidget* parent) : QWidget(parent, Qt::Window), model_(model)
{
    setObjectName(QStringLiteral("OrloSettings"));
    setWindowTitle(QStringLiteral("Orlo Settings"));
    resize(760, 560);

    sidebar_ = new QListWidget(this);
    sidebar_->setFixedWidth(210);
    sidebar_->setIconSize(QSize(16, 16));
    sidebar_->setFrameShape(QFrame::NoFrame);
    auto* general = new QListWidgetItem(symbolIcon(QStringLiteral("gearshape")), tr("General"), sidebar_);
    general->setData(SelectionRole, QStringLiteral("general"));
    auto* section = new QListWidgetItem(tr("Modules"), sidebar_);
    section->setFlags(Qt::NoItemFlags);
    QFont bold = section->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 0.9);
    section->setFont(bold);

    pages_ = new QStackedWidget(this);
    pages_->addWidget(new GeneralSettings(model_, this));
    for (int i = 0; i < int(model_.modules().size()); ++i) {
        const auto& module = model_.modules()[i];
        auto* item = new QListWidgetItem(symbolIcon(module->symbol()), module->title(), sidebar_);
        item->setData(SelectionRole, module->id());
        pages_->addWidget(modulePage(i));
    }

    auto* split = new QHBoxLayout(this);
    split->setContentsMargins(0, 0, 0, 0);
    split->setSpacing(0);
    split->addWidget(sidebar_);
    split->addWidget(pages_, 1);

    connect(sidebar_, &QListWidget::currentRowChanged, this, [this](int row) {
        // Row 1 is the "Modules" heading, which holds no page.
        if (row >= 0) pages_->setCurrentIndex(row == 0 ? 0 : row - 1);
    });
    sidebar_->setCurrentRow(0);
}

QWidget* SettingsView::modulePage(int index)
{
    OrloModule& module = *model_.modules()[index];
    auto* page = new QWidget(this);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(20, 16, 20, 0);
    column->addWidget(new ModuleHeader(model_, module, page));
    if (const QString limit = model_.moduleLimit(module.id()); !limit.isEmpty()) {
        auto* note = new QLabel(limit, page);
        note->setObjectName(QStringLiteral("moduleLimit"));
        note->setWordWrap(true);
        column->addWidget(note);
    }
    auto* scroll = new QScrollArea(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(module.settingsView());
    column->addWidget(scroll, 1);
    return page;
}

QString SettingsView::selection() const
{
    auto* item = sidebar_->currentItem();
    return item ? item->data(SelectionRole).toString() : QString();
}

void SettingsView::select(const QString& id)
{
    for (int row = 0; row < sidebar_->count(); ++row)
        if (sidebar_->item(row)->data(SelectionRole).toString() == id) sidebar_->setCurrentRow(row);
}

void SettingsView::present()
{
    if (!isVisible()) select(QStringLiteral("general"));
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

}  // namespace orlo
