#include "app/OrloApp.h"
#include "app/AppModel.h"
#include "app/OrloBusInterface.h"
#include "kit/Defaults.h"
#include "app/PanelView.h"
#include "kit/Permissions.h"
#include "app/SettingsView.h"
#include "app/TakenShortcutsNotice.h"
#include "kit/Symbols.h"
#include "clipboard/ClipboardModule.h"
#include "input/HotKeys.h"
#include "platform/Platform.h"
#include "switcher/SwitcherModule.h"
#include "system/SystemModule.h"
#include "system/KeyboardCleaner.h"
#include "system/SleepGuard.h"
#include "windows/SnapAction.h"
#include "windows/WindowsModule.h"
#include <QApplication>
#include <QCursor>
#include <QLoggingCategory>
#include <QSystemTrayIcon>
#include <QTimer>

Q_LOGGING_CATEGORY(lcStartup, "orlo.startup", QtWarningMsg)

namespace orlo {

OrloApp::OrloApp(Platform& platform, QObject* parent) : QObject(parent), platform_(platform)
{
    defaults_ = std::make_unique<Defaults>(*platform.settings);
    if (!defaults_->loadProblem().isEmpty()) fprintf(stderr, "Orlo: %s\n", qPrintable(defaults_->loadProblem()));
    permissions_ = std::make_unique<Permissions>(*platform.accessibility);
    hotKeys_ = std::make_unique<HotKeys>(*platform.hotKeys);
    context_ = std::make_unique<OrloContext>(OrloContext{platform, *defaults_, *hotKeys_, *permissions_, events_});

    std::vector<std::unique_ptr<OrloModule>> modules;
    modules.push_back(std::make_unique<SystemModule>(*context_));
    modules.push_back(std::make_unique<WindowsModule>(*context_));
    modules.push_back(std::make_unique<SwitcherModule>(*context_));
    modules.push_back(std::make_unique<ClipboardModule>(*context_));
    model_ = std::make_unique<AppModel>(*permissions_, *platform.loginItem, std::move(modules));
    model_->setModuleLimits(platform.moduleLimits);

    panel_ = std::make_unique<PanelView>(*model_);
    connect(panel_.get(), &PanelView::preferencesRequested, this, [this] { showSettings(); });
    connect(panel_.get(), &PanelView::quitRequested, qApp, &QApplication::quit);
    connect(panel_.get(), &PanelView::noticeClicked, this, [this] { showSettings(notice_->page()); });
    notice_ = std::make_unique<TakenShortcutsNotice>(*hotKeys_, *platform.notifications, *platform.keyboardLayout);
    connect(notice_.get(), &TakenShortcutsNotice::openRequested, this, &OrloApp::showSettings);
    connect(notice_.get(), &TakenShortcutsNotice::notShown, panel_.get(), &PanelView::showNotice);
    showTrayIcon();
    busObject_.reset(OrloBusInterface::publish(*this, *model_));
    if (platform.throughXWayland) explainXWayland();
}

void OrloApp::explainXWayland()
{
    model_->setSessionNote(tr("This is a Wayland session, which Orlo sees through XWayland: only windows of X11 "
                              "programs can be switched and snapped, and the clipboard is shared through XWayland. "
                              "Log in to an X11 session for the whole of Orlo."));
    fprintf(stderr, "Orlo: a Wayland session: only windows of X11 programs can be switched and snapped.\n");
    const QString told = QStringLiteral("app.xwaylandExplained");
    if (defaults_->boolValue(told).value_or(false)) return;
    defaults_->set(told, true);
    platform_.notifications->show(tr("Orlo on Wayland"), model_->sessionNote());
}

OrloApp::~OrloApp()
{
    busObject_.reset();
    prepareToQuit();
    // Views refer to the model: close them first.
    settings_.reset();
    panel_.reset();
    tray_.reset();
}

void OrloApp::showTrayIcon()
{
    // The installed symbolic icon when the icon theme has it, else the bundled symbol.
    const QString installedIcon = QGuiApplication::desktopFileName() + QStringLiteral("-symbolic");
    tray_ = std::make_unique<QSystemTrayIcon>(
        QIcon::fromTheme(installedIcon, symbolIcon(QStringLiteral("rectangle.split.2x2"))));
    tray_->setToolTip(QStringLiteral("Orlo"));
    connect(tray_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::Context)
            panel_->toggleAt(trayAnchor());
    });
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        fprintf(stderr, "Orlo: no system tray is running; the icon appears when one starts. "
                        "Start orlo again to open its settings.\n");
        // Without a tray (stock GNOME) Orlo would start unseen: the first time, its settings
        // window shows itself and tells how to come back to it.
        const QString shown = QStringLiteral("app.settingsShownWithoutTray");
        if (!defaults_->boolValue(shown).value_or(false)) {
            defaults_->set(shown, true);
            QTimer::singleShot(0, this, [this] { showSettings(); });
        }
    }
    tray_->show();
    if (lcStartup().isDebugEnabled()) traceTrayIcon();
}

QRect OrloApp::trayAnchor() const
{
    // A StatusNotifierItem has no geometry of its own; the pointer has just clicked it.
    const QRect icon = tray_->geometry();
    return icon.isValid() && !icon.topLeft().isNull() ? icon : QRect(QCursor::pos(), QSize(1, 1));
}

void OrloApp::traceTrayIcon()
{
    // The tray embeds the icon a moment after show(); report it once it has a place.
    auto* poll = new QTimer(this);
    poll->start(5);
    connect(poll, &QTimer::timeout, this, [this, poll, tries = 0]() mutable {
        const QRect g = tray_->geometry();
        if (g.topLeft().isNull() && ++tries < 600) return;
        qCDebug(lcStartup, "tray icon shown at %d,%d %dx%d", g.x(), g.y(), g.width(), g.height());
        poll->deleteLater();
    });
}

void OrloApp::showSettings(const QString& page)
{
    if (!settings_) settings_ = std::make_unique<SettingsView>(*model_);
    settings_->present();
    if (!page.isEmpty()) settings_->select(page);
}

void OrloApp::prepareToQuit()
{
    if (terminated_) return;
    terminated_ = true;
    emit events_.willTerminate();
    defaults_->flush();
}

template <typename Module>
Module& OrloApp::module(const char* id) const
{
    return *qobject_cast<Module*>(model_->module(QString::fromLatin1(id)));
}

QString OrloApp::perform(const QStringList& words)
{
    const QString action = words.value(0);
    const QString argument = words.value(1);
    if (action == QLatin1String("settings")) {
        showSettings(argument);
        return {};
    }
    if (action == QLatin1String("quit")) {
        // The answer goes out first.
        QTimer::singleShot(0, qApp, &QApplication::quit);
        return {};
    }
    if (action == QLatin1String("switcher")) return module<SwitcherModule>("switcher").openByCommand();
    if (action == QLatin1String("snap")) {
        const auto snap = SnapAction::fromCommandName(argument);
        return snap ? module<WindowsModule>("windows").runCommand(*snap) : tr("There is no snapping action \"%1\".").arg(argument);
    }
    if (action == QLatin1String("toggle-keyboard-cleaning")) return module<SystemModule>("system").keyboardCleaner().toggle();
    if (action == QLatin1String("toggle-prevent-sleep")) {
        SleepGuard& guard = module<SystemModule>("system").sleepGuard();
        guard.setOn(!guard.isOn());
        return {};
    }
    if (action == QLatin1String("clipboard")) {
        auto& clipboard = module<ClipboardModule>("clipboard");
        if (!clipboard.isRunning()) return tr("The clipboard history is off: turn it on in Orlo's panel.");
        clipboard.togglePicker();
        return {};
    }
    return tr("Orlo does not know the action \"%1\".").arg(action);
}

}  // namespace orlo
