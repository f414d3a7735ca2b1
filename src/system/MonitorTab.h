#pragma once
#include "system/AppUsage.h"
#include "system/SystemMonitor.h"
#include <QSet>
#include <QWidget>

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace orlo {

class SystemModule;

// The "Monitor" tab: the machine's CPU and memory, the five-minute chart and the
// applications with their processes, which can be quit from here.
class MonitorTab : public QWidget {
    Q_OBJECT
public:
    explicit MonitorTab(SystemModule& module, QWidget* parent = nullptr);
    ~MonitorTab() override;

    SystemMonitor::SortKey sortKey() const { return sortKey_; }
    void setSortKey(SystemMonitor::SortKey key);
    QTreeWidget* list() const { return list_; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();
    void refreshStatus();
    void confirmQuit();
    QTreeWidgetItem* itemFor(const AppUsage& app);

    SystemModule& module_;
    SystemMonitor& monitor_;
    SystemMonitor::SortKey sortKey_ = SystemMonitor::SortKey::Cpu;
    QLabel* cpu_;
    QLabel* memory_;
    QLabel* status_;
    QLabel* note_;
    QTreeWidget* list_;
    QPushButton* quit_;
    QSet<QString> expanded_;
    bool viewing_ = false;
};

}  // namespace orlo
