#include "system/DiskTab.h"
#include "system/DiskCleaner.h"
#include "system/ByteCount.h"
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orlo {

static constexpr int IdRole = Qt::UserRole;

DiskTab::DiskTab(DiskCleaner& cleaner, QWidget* parent) : QWidget(parent), cleaner_(cleaner)
{
    setObjectName(QStringLiteral("diskTab"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 12, 12, 12);
    auto* intro = new QLabel(tr("Caches are rebuilt by the programs that use them. Chosen items are moved to the Trash, "
                                "so you can still take them back until you empty it."), this);
    intro->setWordWrap(true);
    column->addWidget(intro);

    list_ = new QTreeWidget(this);
    list_->setObjectName(QStringLiteral("cleanupList"));
    list_->setRootIsDecorated(false);
    list_->setHeaderLabels({tr("Item"), tr("Size")});
    list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list_->header()->setStretchLastSection(false);
    column->addWidget(list_, 1);
    connect(list_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int col) {
        if (col == 0) cleaner_.setSelected(item->data(0, IdRole).toString(), item->checkState(0) == Qt::Checked);
    });

    progress_ = new QProgressBar(this);
    progress_->setTextVisible(false);
    progress_->setFixedHeight(6);
    column->addWidget(progress_);
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("diskStatus"));
    status_->setWordWrap(true);
    column->addWidget(status_);

    auto* actions = new QHBoxLayout;
    rescan_ = new QPushButton(tr("Scan Again"), this);
    moveToTrash_ = new QPushButton(tr("Move to Trash"), this);
    moveToTrash_->setObjectName(QStringLiteral("moveToTrash"));
    actions->addWidget(rescan_);
    actions->addStretch(1);
    actions->addWidget(moveToTrash_);
    column->addLayout(actions);

    auto* trashRow = new QHBoxLayout;
    trash_ = new QLabel(this);
    trash_->setObjectName(QStringLiteral("trashSize"));
    emptyTrash_ = new QPushButton(tr("Empty Trash…"), this);
    emptyTrash_->setObjectName(QStringLiteral("emptyTrash"));
    trashRow->addWidget(trash_, 1);
    trashRow->addWidget(emptyTrash_);
    column->addLayout(trashRow);

    connect(rescan_, &QPushButton::clicked, &cleaner_, &DiskCleaner::scan);
    connect(moveToTrash_, &QPushButton::clicked, &cleaner_, &DiskCleaner::moveSelectedToTrash);
    connect(emptyTrash_, &QPushButton::clicked, this, &DiskTab::confirmEmptyTrash);
    connect(&cleaner_, &DiskCleaner::changed, this, &DiskTab::refresh);
    refresh();
}

void DiskTab::showEvent(QShowEvent* event)
{
    // Measuring walks many folders: only when the user first looks.
    if (!scannedOnce_) {
        scannedOnce_ = true;
        cleaner_.scan();
    }
    QWidget::showEvent(event);
}

void DiskTab::refresh()
{
    const QSignalBlocker quiet(list_);
    const auto& items = cleaner_.items();
    if (list_->topLevelItemCount() != items.size()) {
        list_->clear();
        for (const auto& item : items) {
            auto* row = new QTreeWidgetItem(list_, {item.location.title, QString()});
            row->setData(0, IdRole, item.location.id);
            row->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    for (int i = 0; i < items.size(); ++i) {
        QTreeWidgetItem* row = list_->topLevelItem(i);
        const auto& item = items[i];
        row->setText(0, item.location.title);
        row->setData(0, IdRole, item.location.id);
        row->setToolTip(0, item.location.paths.join(QLatin1Char('\n')));
        row->setText(1, item.size ? byteCount(*item.size) : tr("Measuring…"));
        const bool empty = item.size && *item.size == 0;
        row->setFlags(empty || cleaner_.isBusy() ? Qt::ItemIsEnabled : Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        row->setCheckState(0, cleaner_.isSelected(item.location.id) ? Qt::Checked : Qt::Unchecked);
    }

    const bool busy = cleaner_.isBusy();
    progress_->setVisible(busy);
    progress_->setRange(0, int(std::max<qsizetype>(items.size(), 1)));
    progress_->setValue(cleaner_.measured());
    rescan_->setEnabled(!busy);
    moveToTrash_->setEnabled(!busy && cleaner_.selectedSize() > 0);
    moveToTrash_->setText(cleaner_.selectedSize() > 0 ? tr("Move %1 to Trash").arg(byteCount(cleaner_.selectedSize()))
                                                      : tr("Move to Trash"));
    if (!cleaner_.lastError().isEmpty()) status_->setText(cleaner_.lastError());
    else status_->setText(busy ? tr("Measuring…") : QString());
    status_->setVisible(!status_->text().isEmpty());

    const auto trash = cleaner_.trashSize();
    trash_->setText(trash ? tr("Trash: %1").arg(byteCount(*trash)) : tr("Trash: measuring…"));
    emptyTrash_->setEnabled(!busy && trash && *trash > 0);
}

void DiskTab::confirmEmptyTrash()
{
    const auto trash = cleaner_.trashSize();
    QMessageBox box(QMessageBox::Warning, tr("Empty the Trash?"),
                    tr("The %1 in the Trash will be removed for good. This cannot be undone.")
                        .arg(byteCount(trash.value_or(0))),
                    QMessageBox::Cancel, this);
    QPushButton* empty = box.addButton(tr("Empty Trash"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() == empty) cleaner_.emptyTrash();
}

}  // namespace orlo
