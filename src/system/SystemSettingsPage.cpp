#include "system/SystemSettingsPage.h"
#include "system/DiskTab.h"
#include "system/DisplaysTab.h"
#include "system/KeyboardTab.h"
#include "system/MonitorTab.h"
#include "system/SystemLog.h"
#include "system/SystemModule.h"
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace orlo {

SystemSettingsPage::SystemSettingsPage(SystemModule& module, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("SystemSettings"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 8, 0, 8);
    tabs_ = new QTabWidget(this);
    tabs_->addTab(new MonitorTab(module, tabs_), tr("Monitor"));
    tabs_->addTab(new DiskTab(module.diskCleaner(), tabs_), tr("Disk"));
    tabs_->addTab(new DisplaysTab(module, tabs_), tr("Displays"));
    tabs_->addTab(new KeyboardTab(module.keyboardCleaner(), tabs_), tr("Keyboard"));
    column->addWidget(tabs_);
}

void SystemSettingsPage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!lcSystem().isDebugEnabled()) return;
    QTimer::singleShot(100, this, [this] {
        for (int i = 0; i < tabs_->count(); ++i) {
            const QPoint at = tabs_->tabBar()->mapToGlobal(tabs_->tabBar()->tabRect(i).center());
            qCDebug(lcSystem, "system tab %s at %d,%d", qPrintable(tabs_->tabText(i)), at.x(), at.y());
        }
    });
}

}  // namespace orlo
