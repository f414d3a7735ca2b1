#include "system/MonitorTab.h"
#include "system/ByteCount.h"
#include "system/CpuHistoryChart.h"
#include "system/SystemModule.h"
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orlo {

namespace {
enum Column { NameColumn, CpuColumn, MemoryColumn };
constexpr int ProcessIdRole = Qt::UserRole;
constexpr int PidRole = Qt::UserRole + 1;
constexpr int IsAppRole = Qt::UserRole + 2;
constexpr int StartTimeRole = Qt::UserRole + 3;
}  // namespace

static QLabel* figure(QWidget* parent)
{
    auto* label = new QLabel(parent);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 1.5);
    font.setBold(true);
    label->setFont(font);
    return label;
}

static QLabel* caption(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setWordWrap(true);
    return label;
}

MonitorTab::MonitorTab(SystemModule& module, QWidget* parent)
    : QWidget(parent), module_(module), monitor_(module.monitor())
{
    setObjectName(QStringLiteral("monitorTab"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 12, 12, 12);

    auto* figures = new QHBoxLayout;
    auto* cpuColumn = new QVBoxLayout;
    cpuColumn->addWidget(caption(tr("CPU"), this));
    cpuColumn->addWidget(cpu_ = figure(this));
    auto* memoryColumn = new QVBoxLayout;
    memoryColumn->addWidget(caption(tr("Memory"), this));
    memoryColumn->addWidget(memory_ = figure(this));
    figures->addLayout(cpuColumn);
    figures->addSpacing(32);
    figures->addLayout(memoryColumn);
    figures->addStretch(1);
    column->addLayout(figures);

    status_ = caption(QString(), this);
    status_->setObjectName(QStringLiteral("monitorStatus"));
    column->addWidget(status_);

    auto* chartTitle = new QLabel(tr("CPU, last 5 minutes"), this);
    QFont bold = chartTitle->font();
    bold.setBold(true);
    chartTitle->setFont(bold);
    column->addWidget(chartTitle);
    column->addWidget(new CpuHistoryChart(monitor_, this));
    column->addWidget(caption(tr("Hover a bar to see the busiest apps at that moment."), this));

    list_ = new QTreeWidget(this);
    list_->setObjectName(QStringLiteral("appList"));
    list_->setColumnCount(3);
    list_->setHeaderLabels({tr("Application"), tr("CPU"), tr("Memory")});
    list_->header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    list_->header()->setSectionResizeMode(CpuColumn, QHeaderView::ResizeToContents);
    list_->header()->setStretchLastSection(false);
    list_->header()->setSectionsClickable(true);
    list_->header()->setSortIndicatorShown(true);
    list_->setUniformRowHeights(true);
    list_->setMinimumHeight(200);
    column->addWidget(list_, 1);
    connect(list_->header(), &QHeaderView::sectionClicked, this, [this](int section) {
        if (section == CpuColumn) setSortKey(SystemMonitor::SortKey::Cpu);
        if (section == MemoryColumn) setSortKey(SystemMonitor::SortKey::Memory);
    });
    connect(list_, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) { expanded_.insert(item->data(0, ProcessIdRole).toString()); });
    connect(list_, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) { expanded_.remove(item->data(0, ProcessIdRole).toString()); });

    auto* actions = new QHBoxLayout;
    note_ = caption(QString(), this);
    note_->setObjectName(QStringLiteral("quitNote"));
    quit_ = new QPushButton(tr("Quit…"), this);
    quit_->setObjectName(QStringLiteral("quit"));
    actions->addWidget(note_, 1);
    actions->addWidget(quit_);
    column->addLayout(actions);
    connect(quit_, &QPushButton::clicked, this, &MonitorTab::confirmQuit);
    connect(list_, &QTreeWidget::itemSelectionChanged, this,
            [this] { quit_->setEnabled(!list_->selectedItems().isEmpty()); });
    quit_->setEnabled(false);

    connect(&monitor_, &SystemMonitor::quitFailed, note_, &QLabel::setText);
    connect(&monitor_, &SystemMonitor::changed, this, &MonitorTab::refresh);
    connect(&module_, &SystemModule::runningChanged, this, &MonitorTab::refreshStatus);
    setSortKey(sortKey_);
}

MonitorTab::~MonitorTab()
{
    if (viewing_) monitor_.removeViewer();
}

void MonitorTab::showEvent(QShowEvent* event)
{
    if (!viewing_) monitor_.addViewer();
    viewing_ = true;
    QWidget::showEvent(event);
}

void MonitorTab::hideEvent(QHideEvent* event)
{
    if (viewing_) monitor_.removeViewer();
    viewing_ = false;
    QWidget::hideEvent(event);
}

void MonitorTab::setSortKey(SystemMonitor::SortKey key)
{
    sortKey_ = key;
    list_->header()->setSortIndicator(key == SystemMonitor::SortKey::Cpu ? CpuColumn : MemoryColumn, Qt::DescendingOrder);
    refresh();
}

void MonitorTab::refreshStatus()
{
    if (!module_.isRunning()) status_->setText(tr("Monitoring is paused while the module is off."));
    else if (!monitor_.hasSample()) status_->setText(tr("Collecting samples…"));
    status_->setVisible(!module_.isRunning() || !monitor_.hasSample());
}

// Every figure is a share of the whole machine, as the CPU figure above the list is.
static QString cpuHeader(int processors)
{
    return processors > 1 ? MonitorTab::tr("CPU of %1 cores").arg(processors) : MonitorTab::tr("CPU");
}

static QString percent(double value) { return QStringLiteral("%1 %").arg(value, 0, 'f', 1); }

QTreeWidgetItem* MonitorTab::itemFor(const AppUsage& app)
{
    auto* item = new QTreeWidgetItem({app.name, percent(app.cpu), byteCount(app.memory)});
    item->setData(0, ProcessIdRole, app.id());
    item->setData(0, PidRole, app.pid);
    item->setData(0, IsAppRole, app.isApp);
    item->setData(0, StartTimeRole, app.startTime);
    item->setIcon(0, monitor_.icon(app));
    item->setToolTip(0, app.path.isEmpty() ? app.name : app.path);
    item->setTextAlignment(CpuColumn, Qt::AlignRight | Qt::AlignVCenter);
    item->setTextAlignment(MemoryColumn, Qt::AlignRight | Qt::AlignVCenter);
    for (const ProcessUsage& process : app.children) {
        auto* child = new QTreeWidgetItem(item, {QStringLiteral("%1 (%2)").arg(process.name).arg(process.pid),
                                                 percent(process.cpu), byteCount(process.memory)});
        child->setData(0, ProcessIdRole, QStringLiteral("pid-%1").arg(process.pid));
        child->setData(0, PidRole, process.pid);
        child->setData(0, IsAppRole, false);
        child->setData(0, StartTimeRole, process.startTime);
        child->setToolTip(0, process.path);
        child->setTextAlignment(CpuColumn, Qt::AlignRight | Qt::AlignVCenter);
        child->setTextAlignment(MemoryColumn, Qt::AlignRight | Qt::AlignVCenter);
    }
    return item;
}

void MonitorTab::refresh()
{
    refreshStatus();
    if (!monitor_.hasSample()) {
        cpu_->setText(QStringLiteral("–"));
        memory_->setText(QStringLiteral("–"));
        return;
    }
    cpu_->setText(QStringLiteral("%1 %").arg(monitor_.cpu(), 0, 'f', 0));
    list_->headerItem()->setText(CpuColumn, cpuHeader(monitor_.processors()));
    memory_->setText(tr("%1 of %2").arg(byteCount(monitor_.memoryUsed()), byteCount(monitor_.memoryTotal())));
    memory_->setStyleSheet(monitor_.pressure() >= 4 ? QStringLiteral("color: #C0392B;")
                           : monitor_.pressure() >= 2 ? QStringLiteral("color: #D68910;") : QString());

    const QTreeWidgetItem* current = list_->currentItem();
    const QString currentId = current ? current->data(0, ProcessIdRole).toString() : QString();
    const int scroll = list_->verticalScrollBar()->value();
    list_->setUpdatesEnabled(false);
    list_->clear();
    QList<QTreeWidgetItem*> items;
    for (const AppUsage& app : monitor_.sorted(sortKey_)) items << itemFor(app);
    list_->addTopLevelItems(items);
    for (QTreeWidgetItem* item : std::as_const(items)) {
        if (expanded_.contains(item->data(0, ProcessIdRole).toString())) item->setExpanded(true);
        if (!currentId.isEmpty() && item->data(0, ProcessIdRole).toString() == currentId) list_->setCurrentItem(item);
        for (int i = 0; i < item->childCount() && !currentId.isEmpty(); ++i)
            if (item->child(i)->data(0, ProcessIdRole).toString() == currentId) list_->setCurrentItem(item->child(i));
    }
    list_->verticalScrollBar()->setValue(scroll);
    list_->setUpdatesEnabled(true);
}

// Quitting another program can lose its unsaved work: the user chooses how, or not at all.
void MonitorTab::confirmQuit()
{
    const QTreeWidgetItem* item = list_->currentItem();
    if (!item) return;
    AppUsage target;
    target.pid = item->data(0, PidRole).toLongLong();
    target.isApp = item->data(0, IsAppRole).toBool();
    target.startTime = item->data(0, StartTimeRole).toULongLong();
    target.name = item->text(NameColumn);
    QMessageBox box(QMessageBox::Question, tr("Quit “%1”?").arg(target.name),
                    tr("Quit lets “%1” end its own way. Force Quit ends it at once, and anything it has not saved is lost.")
                        .arg(target.name),
                    QMessageBox::Cancel, this);
    QPushButton* quit = box.addButton(tr("Quit"), QMessageBox::AcceptRole);
    QPushButton* force = box.addButton(tr("Force Quit"), QMessageBox::DestructiveRole);
    box.setDefaultButton(quit);
    box.exec();
    if (box.clickedButton() == quit || box.clickedButton() == force)
        note_->setText(monitor_.quit(target, box.clickedButton() == force));
}

}  // namespace orlo
