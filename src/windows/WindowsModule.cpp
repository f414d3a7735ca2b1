#include "windows/WindowsModule.h"
#include "platform/Platform.h"
#include "windows/SnapDragController.h"
#include "windows/SnapGrid.h"
#include "kit/SnapScreens.h"
#include "windows/SnapSettings.h"
#include "windows/WindowsSettingsView.h"
#include <QLoggingCategory>
#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(lcWindows, "orlo.windows", QtWarningMsg)

namespace orlo {

namespace {
// How far a window may stand from an area and still count as being in it.
constexpr double cycleTolerance = 8;
// Past this many remembered windows, closed ones are forgotten.
constexpr int memorySoftLimit = 200;

bool near(const QRectF& a, const QRectF& b)
{
    return std::abs(a.x() - b.x()) <= cycleTolerance && std::abs(a.y() - b.y()) <= cycleTolerance
        && std::abs(a.width() - b.width()) <= cycleTolerance && std::abs(a.height() - b.height()) <= cycleTolerance;
}
}  // namespace

WindowsModule::WindowsModule(OrloContext& context, QObject* parent)
    : OrloModule(context.defaults, parent), context_(context), windows_(*context.platform.windowServer),
      settings_(std::make_unique<SnapSettings>(context.defaults))
{
    Platform& platform = context_.platform;
    drag_ = std::make_unique<SnapDragController>(
        *platform.mouseMonitor, windows_, *platform.screens, *settings_, platform.workspace->ownPid(),
        [this](const SnapWindow& w, SnapArea area, const ScreenInfo& screen, const QRectF& start) {
            snapDragged(w, area, screen, start);
        });
    // A new shortcut takes effect at once. While one is being recorded the hot keys are let
    // go, or they would catch the very keys being recorded.
    connect(settings_.get(), &SnapSettings::shortcutsChanged, this, [this] {
        if (running_ && !settings_->recording()) registerHotKeys();
    });
    connect(settings_.get(), &SnapSettings::recordingChanged, this, [this] {
        if (!running_) return;
        if (settings_->recording())
            unregisterHotKeys();
        else
            registerHotKeys();
    });
    connect(settings_.get(), &SnapSettings::dragToSnapChanged, this, [this](bool on) {
        if (!running_) return;
        if (on)
            startDrag();
        else
            stopDrag();
    });
}

WindowsModule::~WindowsModule()
{
    if (running_) stop();
}

void WindowsModule::start()
{
    running_ = true;
    if (!settings_->recording()) registerHotKeys();
    if (settings_->dragToSnap()) startDrag();
    // The application in front is followed as it changes rather than asked for on every key
    // press: asking the window system costs more than the rest of a snap.
    Workspace& workspace = *context_.platform.workspace;
    frontApp_ = workspace.frontmostApplication();
    if (frontApp_ && frontApp_->pid != workspace.ownPid()) lastApp_ = frontApp_;
    activationObserver_ = connect(&workspace, &Workspace::applicationActivated, this, [this](const AppInfo& app) {
        frontApp_ = app;
        if (app.pid != context_.platform.workspace->ownPid()) lastApp_ = app;
    });
}

void WindowsModule::stop()
{
    unregisterHotKeys();
    refused_.clear();
    context_.hotKeys.reportTaken(id(), {});
    stopDrag();
    disconnect(activationObserver_);
    running_ = false;
    emit hotKeysChanged();
}

void WindowsModule::startDrag()
{
    drag_->start();
    const QString advice = edgeTilingAdvice();
    if (!advice.isEmpty()) qCDebug(lcWindows, "edge tiling: %s", qPrintable(advice));
    context_.hotKeys.reportAdvice(id(), advice);
}

void WindowsModule::stopDrag()
{
    drag_->stop();
    context_.hotKeys.reportAdvice(id(), {});
}

bool WindowsModule::canDragToSnap() const { return context_.platform.mouseMonitor->canFollow(); }

QString WindowsModule::edgeTilingAdvice() const
{
    EdgeTiling* tiling = context_.platform.edgeTiling.get();
    const QString place = tiling ? tiling->switchOffPlace() : QString();
    if (place.isEmpty()) return {};
#ifdef Q_OS_MACOS
    return tr("macOS also tiles windows dragged to a screen edge, so it and Orlo's Drag to Snap both act on the same "
              "drag. Turn its tiling off in %1.")
        .arg(place);
#else
    return tr("Your window manager also tiles windows dropped on a screen edge, so it and Orlo's Drag to Snap both "
              "act on the same drag. Turn its edge tiling off: %1.")
        .arg(place);
#endif
}

QWidget* WindowsModule::settingsView()
{
    return new WindowsSettingsView(*this, context_.hotKeys, *context_.platform.keyboardLayout);
}

void WindowsModule::registerHotKeys()
{
    unregisterHotKeys();
    refused_.clear();
    // A shortcut shared by several actions is one hot key that runs them all.
    QList<Shortcut> bound;
    QList<HotKeys::Taken> taken;
    for (SnapAction action : SnapAction::all()) {
        const auto shortcut = settings_->shortcut(action);
        if (!shortcut) continue;
        if (!bound.contains(*shortcut)) {
            bound << *shortcut;
            if (auto token = context_.hotKeys.registerHotKey(*shortcut, [this, s = *shortcut] { pressed(s); }))
                tokens_ << *token;
            else
                refused_ << *shortcut;
        }
        if (refused_.contains(*shortcut))
            taken << HotKeys::Taken{id(), action.title(), *shortcut, QStringLiteral("orlo snap ") + action.commandName()};
    }
    freeKeys_ = refused_.isEmpty() ? std::nullopt : findFreeKeys();
    context_.hotKeys.reportTaken(id(), taken);
    QStringList names;
    for (const HotKeys::Taken& t : std::as_const(taken)) names << t.action;
    qCDebug(lcWindows, "hot keys: %d registered, %d refused%s%s", int(tokens_.size()), int(refused_.size()),
            names.isEmpty() ? "" : ": ", qPrintable(names.join(QStringLiteral(", "))));
    qCDebug(lcWindows, "free keys: %s", qPrintable(freeKeysLogText()));
    emit hotKeysChanged();
}

std::optional<SnapKeySet> WindowsModule::findFreeKeys()
{
    HotKeys& hotKeys = context_.hotKeys;
    for (const SnapKeySet& set : SnapKeySet::alternatives()) {
        const QHash<SnapAction, Shortcut> keys = set.shortcuts();
        if (std::all_of(keys.begin(), keys.end(), [&](const Shortcut& s) { return hotKeys.isFree(s); })) return set;
    }
    return std::nullopt;
}

QString WindowsModule::freeKeysLogText() const
{
    if (refused_.isEmpty()) return QStringLiteral("not needed");
    if (!freeKeys_) return QStringLiteral("none");
    return freeKeys_->shortcut(SnapArea::leftHalf).label(*context_.platform.keyboardLayout, Shortcut::LabelStyle::Names)
        + QStringLiteral(" for left half");
}

QString WindowsModule::freeKeysDescription() const
{
    if (!freeKeys_) return {};
    const SnapAction leftHalf = SnapArea::leftHalf;
    return tr("%1 for %2, and the other keys likewise")
        .arg(freeKeys_->shortcut(leftHalf).label(*context_.platform.keyboardLayout), leftHalf.title());
}

void WindowsModule::useFreeKeys()
{
    if (!freeKeys_) return;
    settings_->endRecording();
    settings_->setShortcuts(freeKeys_->shortcuts());
}

void WindowsModule::unregisterHotKeys()
{
    context_.hotKeys.unregister(tokens_);
    tokens_.clear();
}

std::optional<AppInfo> WindowsModule::targetApp() const
{
    // With Orlo's own settings in front, the keys act on the application the user came from.
    if (frontApp_ && frontApp_->pid != context_.platform.workspace->ownPid()) return frontApp_;
    return lastApp_;
}

std::optional<SnapWindow> WindowsModule::targetWindow() const
{
    const auto app = targetApp();
    if (!app) return std::nullopt;
    return SnapWindow::focused(windows_, app->pid);
}

void WindowsModule::pressed(const Shortcut& shortcut)
{
    QList<SnapArea> areas;
    for (SnapAction action : SnapAction::all()) {
        if (settings_->shortcut(action) != shortcut) continue;
        if (auto area = action.area()) {
            areas << *area;
        } else {
            run(action);  // any other action on the same shortcut wins over snapping
            return;
        }
    }
    snap(areas);
}

QString WindowsModule::runCommand(SnapAction action)
{
    if (!running_) return tr("Window snapping is off: turn on the Window Manager in Orlo's panel.");
    if (auto area = action.area())
        snap({*area});
    else
        run(action);
    return {};
}

std::optional<QRectF> WindowsModule::movableFrame(const std::optional<SnapWindow>& window) const
{
    if (!window) return std::nullopt;
    // A full-screen window (a video, a presentation) stays as the user made it.
    if (window->isFullScreen()) {
        qCDebug(lcWindows, "window 0x%llx is full screen: left as it is", static_cast<unsigned long long>(window->id()));
        return std::nullopt;
    }
    return window->frame();
}

void WindowsModule::snap(const QList<SnapArea>& areas)
{
    if (areas.isEmpty()) return;
    const auto window = targetWindow();
    const auto frame = movableFrame(window);
    if (!frame) return;
    const SnapScreens screens(*context_.platform.screens);
    const QRectF current = screens.flip(*frame);
    const auto screen = screens.screenFor(current);
    if (!screen) return;

    const QList<SnapArea> cycle = settings_->rule(SnapScreenKind::of(*screen)).cycle(areas);
    auto frameOf = [&](SnapArea area) { return screens.flip(area.frame(screen->visibleFrame, settings_->gap(), current)); };
    SnapArea target = cycle.first();
    if (cycle.size() >= 2) {
        for (int k = 0; k < cycle.size(); ++k) {
            // A window that grows in steps stands in an area when it has the frame it
            // could take there, which may be a little smaller than the area.
            if (near(window->attainableFrame(frameOf(cycle[k])), *frame)) {
                target = cycle[(k + 1) % cycle.size()];
                break;
            }
        }
    }
    remember(*window, *frame);
    place(*window, frameOf(target));
}

void WindowsModule::run(SnapAction action)
{
    switch (action.ordinal()) {
    case SnapAction::nextDisplay: moveToDisplay(+1); break;
    case SnapAction::previousDisplay: moveToDisplay(-1); break;
    case SnapAction::restore: restore(); break;
    case SnapAction::autoLayout: autoLayout(); break;
    default: break;
    }
}

void WindowsModule::moveToDisplay(int offset)
{
    const SnapScreens screens(*context_.platform.screens);
    const QList<ScreenInfo> ordered = screens.ordered();
    const int m = ordered.size();
    if (m <= 1) return;
    const auto window = targetWindow();
    const auto frame = movableFrame(window);
    if (!frame) return;
    const QRectF f = screens.flip(*frame);
    const auto screen = screens.screenFor(f);
    const int i = screen ? screens.orderedIndex(*screen) : -1;
    if (i < 0) return;
    const QRectF o = screen->visibleFrame;
    const QRectF n = ordered[((i + offset) % m + m) % m].visibleFrame;
    if (o.width() <= 0 || o.height() <= 0) return;

    // The window keeps its place and size relative to the usable area, wholly inside it.
    const double wf = std::min(f.width() / o.width(), 1.0);
    const double hf = std::min(f.height() / o.height(), 1.0);
    const double rx = std::clamp((f.x() - o.x()) / o.width(), 0.0, 1 - wf);
    const double ry = std::clamp((f.y() - o.y()) / o.height(), 0.0, 1 - hf);
    const QRectF moved = SnapArea::integral(QRectF(n.x() + rx * n.width(), n.y() + ry * n.height(), wf * n.width(), hf * n.height()));
    remember(*window, *frame);
    place(*window, screens.flip(moved));
}

void WindowsModule::autoLayout()
{
    const SnapScreens screens(*context_.platform.screens);
    const auto app = targetApp();
    const auto window = app ? SnapWindow::focused(windows_, app->pid) : std::nullopt;
    const auto frame = window ? window->frame() : std::nullopt;
    std::optional<ScreenInfo> screen;
    if (frame) screen = screens.screenFor(screens.flip(*frame));
    if (!screen) screen = screens.screenAt(context_.platform.mouseMonitor->location());
    if (!screen) return;

    QList<qint64> apps;
    if (settings_->autoLayoutAllApps()) {
        apps = windows_.regularApplications();
        apps.removeAll(context_.platform.workspace->ownPid());
    } else if (app) {
        apps << app->pid;
    }
    QList<std::pair<SnapWindow, QRectF>> arranged;
    for (qint64 pid : std::as_const(apps)) {
        for (const SnapWindow& w : SnapWindow::windows(windows_, pid)) {
            if (!w.isStandard() || w.isMinimized() || w.isFullScreen() || !w.isOnCurrentDesktop()) continue;
            const auto f = w.frame();
            if (!f) continue;
            const auto on = screens.screenFor(screens.flip(*f));
            if (on && SnapScreens::same(*on, *screen)) arranged.append({w, *f});
        }
    }
    if (arranged.isEmpty()) return;
    // Reading order: top rows first, left to right.
    std::stable_sort(arranged.begin(), arranged.end(), [](const auto& a, const auto& b) {
        if (a.second.y() != b.second.y()) return a.second.y() < b.second.y();
        return a.second.x() < b.second.x();
    });
    const QRectF visible = screen->visibleFrame;
    const QList<QRectF> cells = SnapGrid::cells(arranged.size(), visible.width(), visible.height());
    for (int i = 0; i < arranged.size(); ++i) {
        const auto& [w, f] = arranged[i];
        remember(w, f);
        place(w, screens.flip(SnapArea::frame(cells[i], visible, settings_->gap())));
    }
}

void WindowsModule::remember(const SnapWindow& window, const QRectF& frame)
{
    if (restoreFrames_.size() > memorySoftLimit)
        restoreFrames_.removeIf([](QHash<SnapWindow, QRectF>::iterator it) { return !it.key().frame(); });
    // The frame from before the first snap of a series is the one to go back to.
    if (!restoreFrames_.contains(window)) restoreFrames_.insert(window, frame);
}

void WindowsModule::restore()
{
    const auto window = targetWindow();
    if (!window) return;
    const auto it = restoreFrames_.constFind(*window);
    if (it == restoreFrames_.constEnd()) return;
    const QRectF frame = *it;
    restoreFrames_.erase(it);
    place(*window, frame);
}

void WindowsModule::snapDragged(const SnapWindow& window, SnapArea area, const ScreenInfo& screen, const QRectF& startFrame)
{
    const SnapScreens screens(*context_.platform.screens);
    remember(window, startFrame);
    const QRectF current = screens.flip(window.frame().value_or(startFrame));
    place(window, screens.flip(area.frame(screen.visibleFrame, settings_->gap(), current)));
}

void WindowsModule::place(const SnapWindow& window, const QRectF& frame)
{
    window.setFrame(frame);
    qCDebug(lcWindows, "window 0x%llx set to %g,%g %gx%g", static_cast<unsigned long long>(window.id()), frame.x(), frame.y(),
            frame.width(), frame.height());
}

}  // namespace orlo
