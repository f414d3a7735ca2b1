#include "app/AppModel.h"
#include "kit/Permissions.h"
#include "platform/LoginItem.h"
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcModules, "orlo.modules", QtWarningMsg)

namespace orlo {

AppModel::AppModel(Permissions& permissions, LoginItem& loginItem,
                   std::vector<std::unique_ptr<OrloModule>> modules, QObject* parent)
    : QObject(parent), permissions_(permissions), loginItem_(loginItem), modules_(std::move(modules))
{
    watcher_.setInterval(WatchIntervalMs);
    connect(&watcher_, &QTimer::timeout, this, &AppModel::apply);
    watcher_.start();
    // The first pass runs on the next turn of the event loop, not inside the constructor.
    QTimer::singleShot(0, this, &AppModel::apply);
}

OrloModule* AppModel::module(const QString& id) const
{
    for (const auto& m : modules_)
        if (m->id() == id) return m.get();
    return nullptr;
}

void AppModel::apply()
{
    bool changed = false;
    for (const auto& m : modules_) {
        const bool shouldRun = m->isEnabled() && (!m->needsAccessibility() || permissions_.accessibility());
        const QString id = m->id();
        if (shouldRun && !running_.contains(id)) {
            m->start();
            running_.insert(id);
            qCDebug(lcModules, "started %s", qPrintable(id));
            changed = true;
        } else if (!shouldRun && running_.contains(id)) {
            m->stop();
            running_.remove(id);
            qCDebug(lcModules, "stopped %s", qPrintable(id));
            changed = true;
        }
    }
    if (changed) emit runningChanged();
}

void AppModel::setModuleEnabled(OrloModule& module, bool enabled)
{
    module.setEnabled(enabled);
    bumpRevision();
    apply();
}

bool AppModel::launchAtLogin() const { return loginItem_.status() == LoginItemStatus::Enabled; }

void AppModel::setLaunchAtLogin(bool on)
{
    // Failures are not reported: the switch shows the system's real state after the redraw.
    on ? loginItem_.registerItem() : loginItem_.unregisterItem();
    bumpRevision();
}

void AppModel::bumpRevision()
{
    ++revision_;
    emit revisionChanged(revision_);
}

}  // namespace orlo
