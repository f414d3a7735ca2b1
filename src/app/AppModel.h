#pragma once
#include <QHash>
#include "kit/OrloModule.h"
#include <QObject>
#include <QSet>
#include <QTimer>
#include <memory>
#include <vector>

namespace orlo {

class LoginItem;
class Permissions;

// The single application model: owns the modules and starts exactly those that are
// enabled and have the permissions they need.
class AppModel : public QObject {
    Q_OBJECT
public:
    static constexpr int WatchIntervalMs = 2000;

    AppModel(Permissions& permissions, LoginItem& loginItem,
             std::vector<std::unique_ptr<OrloModule>> modules, QObject* parent = nullptr);

    Permissions& permissions() const { return permissions_; }
    const std::vector<std::unique_ptr<OrloModule>>& modules() const { return modules_; }
    OrloModule* module(const QString& id) const;
    int revision() const { return revision_; }
    const QSet<QString>& running() const { return running_; }

    // One pass: start the modules that should run, stop those that should not.
    void apply();
    // What every module switch does: store the wish, bump the revision, apply at once.
    void setModuleEnabled(OrloModule& module, bool enabled);

    // A sentence on what Orlo can do in this kind of desktop session, when it cannot do all.
    QString sessionNote() const { return sessionNote_; }
    void setSessionNote(const QString& note) { sessionNote_ = note; }
    // What the session keeps a module from doing, shown on its settings page; empty when nothing.
    QString moduleLimit(const QString& moduleId) const { return moduleLimits_.value(moduleId); }
    void setModuleLimits(const QHash<QString, QString>& limits) { moduleLimits_ = limits; }

    bool launchAtLogin() const;
    void setLaunchAtLogin(bool on);

signals:
    void revisionChanged(int revision);
    void runningChanged();

private:
    void bumpRevision();

    Permissions& permissions_;
    LoginItem& loginItem_;
    std::vector<std::unique_ptr<OrloModule>> modules_;
    int revision_ = 0;
    QSet<QString> running_;
    QString sessionNote_;
    QHash<QString, QString> moduleLimits_;
    QTimer watcher_;
};

}  // namespace orlo
