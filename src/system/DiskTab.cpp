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
#include <QTreeWidgetItemIterator>
#include <optional>
#include <QVBoxLayout>

namespace orlo {

static constexpr int LocationIdRole = Qt::UserRole;

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
    // A click on the heading checks or unchecks every cache below it, each a change of its own.
    connect(list_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int col) {
        const QString id = item->data(0, LocationIdRole).toString();
        if (col == 0 && !id.isEmpty()) cleaner_.setSelected(id, item->checkState(0) == Qt::Checked);
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

// The programs' caches under one heading that chooses them all at once, then the rest.
void DiskTab::rebuild()
{
    list_->clear();
    QTreeWidgetItem* caches = nullptr;
    for (const auto& item : cleaner_.items()) {
        QTreeWidgetItem* parent = nullptr;
        if (item.location.appCache) {
            if (!caches) {
                caches = new QTreeWidgetItem(list_, {tr("App caches"), QString()});
                caches->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate);
                caches->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
                caches->setExpanded(true);
            }
            parent = caches;
        }
        auto* row = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(list_);
        row->setData(0, LocationIdRole, item.location.id);
        row->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    }
    list_->setRootIsDecorated(caches != nullptr);
}

void DiskTab::refresh()
{
    const QSignalBlocker quiet(list_);
    const auto& items = cleaner_.items();
    QHash<QString, QTreeWidgetItem*> rows;
    for (QTreeWidgetItemIterator it(list_); *it; ++it)
        if (const QString id = (*it)->data(0, LocationIdRole).toString(); !id.isEmpty()) rows.insert(id, *it);
    bool same = rows.size() == items.size();
    for (const auto& item : items) same = same && rows.contains(item.location.id);
    if (!same) {
        rebuild();
        rows.clear();
        for (QTreeWidgetItemIterator it(list_); *it; ++it)
            if (const QString id = (*it)->data(0, LocationIdRole).toString(); !id.isEmpty()) rows.insert(id, *it);
    }
    std::optional<quint64> cachesSize = 0;
    for (const auto& item : items) {
        QTreeWidgetItem* row = rows.value(item.location.id);
        const QString& usedBy = item.location.usedBy;
        row->setText(0, usedBy.isEmpty() ? item.location.title : tr("%1 — in use by %2").arg(item.location.title, usedBy));
        row->setToolTip(0, item.location.paths.join(QLatin1Char('\n')));
        row->setText(1, item.size ? byteCount(*item.size) : tr("Measuring…"));
        const bool empty = item.size && *item.size == 0;
        row->setFlags(empty || cleaner_.isBusy() ? Qt::ItemIsEnabled : Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        row->setCheckState(0, cleaner_.isSelected(item.location.id) ? Qt::Checked : Qt::Unchecked);
        if (item.location.appCache) cachesSize = item.size && cachesSize ? std::optional(*cachesSize + *item.size) : std::nullopt;
    }
    if (QTreeWidgetItem* caches = list_->topLevelItemCount() ? list_->topLevelItem(0) : nullptr; caches && caches->childCount())
        caches->setText(1, cachesSize ? byteCount(*cachesSize) : tr("Measuring…"));

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
