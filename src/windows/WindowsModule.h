#pragma once
#include "kit/OrloContext.h"
#include "kit/OrloModule.h"
#include "input/HotKeys.h"
#include "platform/Workspace.h"
#include "windows/SnapAction.h"
#include "windows/SnapWindow.h"
#include <QHash>
#include <memory>
#include <optional>

namespace orlo {

class SnapDragController;
class SnapSettings;
struct ScreenInfo;

// Window snapping: the hot keys of the snap actions, drag to snap, and the memory of each
// window's frame before it was first snapped.
class WindowsModule : public OrloModule {
    Q_OBJECT
public:
    explicit WindowsModule(OrloContext& context, QObject* parent = nullptr);
    ~WindowsModule() override;

    QString id() const override { return QStringLiteral("windows"); }
    QString title() const override { return tr("Window Manager"); }
    QString symbol() const override { return QStringLiteral("rectangle.split.2x2"); }
    QString summary() const override { return tr("Snap windows into zones with the mouse or the keyboard."); }
    bool needsAccessibility() const override { return true; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;

    SnapSettings& settings() { return *settings_; }
    SnapDragController& drag() { return *drag_; }
    bool isRunning() const { return running_; }
    // Whether the system refused this shortcut's hot key the last time the module took it.
    bool isRefused(const Shortcut& shortcut) const { return refused_.contains(shortcut); }
    // While the system refuses some bound shortcuts: the first other set of keys that it
    // grants whole, tried when the hot keys were last taken.
    std::optional<SnapKeySet> freeKeySet() const { return freeKeys_; }
    // The free set as the user reads it; empty when there is none.
    QString freeKeysDescription() const;
    // Binds every action to the free set's keys.
    void useFreeKeys();

    // What to switch off when the window manager also tiles windows dropped on a screen
    // edge, and so fights drag to snap; empty when it does not.
    QString edgeTilingAdvice() const;
    // Whether Orlo can follow a window's drag here at all.
    bool canDragToSnap() const;

    // A bound shortcut was pressed: it may stand for several actions.
    void pressed(const Shortcut& shortcut);
    // One action other than snapping to an area.
    void run(SnapAction action);
    // An action asked for from outside Orlo, carried out as its shortcut would be; returns
    // why it was not, or an empty text.
    QString runCommand(SnapAction action);

signals:
    void hotKeysChanged();

private:
    // Snaps the focused window into the first of the areas, or, when it already stands in one
    // of their cycle, into the next.
    void snap(const QList<SnapArea>& areas);
    void registerHotKeys();
    void startDrag();
    void stopDrag();
    void unregisterHotKeys();
    std::optional<SnapKeySet> findFreeKeys();
    QString freeKeysLogText() const;
    std::optional<AppInfo> targetApp() const;
    std::optional<SnapWindow> targetWindow() const;
    // The frame of a window the snap actions may move: none for a full-screen one.
    std::optional<QRectF> movableFrame(const std::optional<SnapWindow>& window) const;
    void moveToDisplay(int offset);
    void autoLayout();
    void restore();
    void remember(const SnapWindow& window, const QRectF& frame);
    void snapDragged(const SnapWindow& window, SnapArea area, const ScreenInfo& screen, const QRectF& startFrame);
    void place(const SnapWindow& window, const QRectF& frame);

    OrloContext& context_;
    WindowServer& windows_;
    std::unique_ptr<SnapSettings> settings_;
    std::unique_ptr<SnapDragController> drag_;
    bool running_ = false;
    QList<HotKeys::Token> tokens_;
    QList<Shortcut> refused_;
    std::optional<SnapKeySet> freeKeys_;
    QMetaObject::Connection activationObserver_;
    std::optional<AppInfo> frontApp_;
    std::optional<AppInfo> lastApp_;
    QHash<SnapWindow, QRectF> restoreFrames_;
};

}  // namespace orlo
