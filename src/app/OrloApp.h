#pragma once
#include "kit/OrloContext.h"
#include <QObject>
#include <QPointer>
#include <memory>

class QSystemTrayIcon;

namespace orlo {

class AppModel;
class OrloBusInterface;
class Defaults;
class HotKeys;
class PanelView;
class Permissions;
class SettingsView;
class TakenShortcutsNotice;
struct Platform;

// The application: the model, the tray icon with its panel, and the settings window.
class OrloApp : public QObject {
    Q_OBJECT
public:
    explicit OrloApp(Platform& platform, QObject* parent = nullptr);
    ~OrloApp() override;

    AppModel& model() { return *model_; }
    // Opens the settings window, on a module's page when one is named.
    void showSettings(const QString& page = {});
    // Saves what must not be lost; called once when Orlo quits by any orderly way.
    void prepareToQuit();
    // Carries out an action asked for from outside Orlo (see OrloCommands), its words
    // checked already; returns why it was not carried out, or an empty text.
    QString perform(const QStringList& words);

private:
    // The module of a given id; the composition makes one of each.
    template <typename Module>
    Module& module(const char* id) const;
    void showTrayIcon();
    void traceTrayIcon();
    // In a Wayland session: says once what works there, and on the General page always.
    void explainXWayland();
    QRect trayAnchor() const;

    Platform& platform_;
    std::unique_ptr<Defaults> defaults_;
    std::unique_ptr<Permissions> permissions_;
    std::unique_ptr<HotKeys> hotKeys_;
    AppEvents events_;
    std::unique_ptr<OrloContext> context_;
    std::unique_ptr<AppModel> model_;
    std::unique_ptr<QSystemTrayIcon> tray_;
    std::unique_ptr<PanelView> panel_;
    std::unique_ptr<SettingsView> settings_;
    std::unique_ptr<TakenShortcutsNotice> notice_;
    std::unique_ptr<QObject> busObject_;
    bool terminated_ = false;
};

}  // namespace orlo
