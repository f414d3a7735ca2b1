#pragma once
#include "platform/WindowCatalog.h"
#include "switcher/BrowserTab.h"
#include <QHash>
#include <QObject>
#include <QSet>
#include <QThreadPool>
#include <functional>

namespace orlo {

class Scripting;

// The tabs of the running browsers, asked for through the browsers' scripting, one browser
// after another on a worker thread of its own; and bringing a chosen tab to the front.
class BrowserTabs : public QObject {
    Q_OBJECT
public:
    using Tabs = QHash<QString, QList<BrowserTab>>;  // by browser bundle identifier

    static const QStringList safari;
    static const QStringList chromium;
    // The error a run reports when the user denied Orlo the automation of the browser.
    static constexpr int AutomationDenied = -1743;

    BrowserTabs(Scripting& scripting, WindowCatalog& catalog, QObject* parent = nullptr);
    ~BrowserTabs() override;

    bool isAvailable() const;
    // Asks every running browser that is not excluded; done runs on this thread with the
    // new tabs. While a refresh runs, another one returns at once and never calls its done.
    void refresh(const QSet<QString>& excluded, std::function<void(const Tabs&)> done);
    void select(const BrowserTab& tab);

    const Tabs& cache() const { return cache_; }
    const QSet<QString>& denied() const { return denied_; }
    bool isRefreshing() const { return refreshing_; }
    QList<RunningApp> runningBrowsers(const QSet<QString>& excluded);
    // Waits until the worker has run everything it was given (for orderly ends and tests).
    void waitForWorker();

    static QString listingScript(const QString& bundleId);
    static QString selectingScript(const BrowserTab& tab);
    static QList<BrowserTab> parse(const QString& bundleId, const QString& answer);

signals:
    void deniedChanged();

private:
    Scripting& scripting_;
    WindowCatalog& catalog_;
    Tabs cache_;
    QSet<QString> denied_;
    bool refreshing_ = false;
    QThreadPool worker_;
};

}  // namespace orlo
