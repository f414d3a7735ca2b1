#pragma once
// An in-memory platform: every port with its state in public fields, for unit tests.
#include "platform/Platform.h"
#include "FakeSystemPorts.h"
#include "platform/posix/WindowOverlay.h"
#include <QHash>
#include <cmath>
#include <QKeyEvent>
#include <QMap>
#include <QSet>
#include <atomic>

namespace orlo::fakes {

struct FakeAccessibility : Accessibility {
    bool trusted = false;
    int prompts = 0;
    int settingsOpened = 0;
    bool isTrusted() override { return trusted; }
    bool requestTrust() override { ++prompts; return trusted; }
    void openSettings() override { ++settingsOpened; }
};

struct FakeKeyboardLayout : KeyboardLayout {
    QHash<quint32, QString> characters{{0, "a"}, {9, "v"}, {40, "k"}};
    std::optional<QString> character(quint32 keyCode) override
    {
        if (!characters.contains(keyCode)) return std::nullopt;
        return characters.value(keyCode);
    }
    std::optional<KeyEvent> keyEvent(const QKeyEvent& e) override
    {
        return KeyEvent{KeyEventType::KeyDown, quint32(e.nativeScanCode()), quint64(e.nativeModifiers()), false, e.text()};
    }
};

struct FakeHotKeyService : HotKeyService {
    QSet<quint32> refusedKeyCodes;
    QSet<QPair<quint32, quint32>> refusedCombos;  // key code, Carbon modifiers
    QSet<quint32> heldElsewhereKeyCodes;
    bool isHeldByAnotherApp(quint32 keyCode, quint32) override { return heldElsewhereKeyCodes.contains(keyCode); }
    QHash<quint32, QPair<quint32, quint32>> registered;  // id -> key code, Carbon modifiers
    bool registerHotKey(quint32 id, quint32 keyCode, quint32 mods) override
    {
        if (refusedKeyCodes.contains(keyCode) || refusedCombos.contains({keyCode, mods})) return false;
        registered.insert(id, {keyCode, mods});
        return true;
    }
    void unregisterHotKey(quint32 id) override { registered.remove(id); }
    void press(quint32 id) { emit pressed(id); }
    void pressWhileHeld(quint32 id, const KeyEvent& key) { emit pressedWhileHeld(id, key); }
};

struct FakeKeyTap : KeyTap {
    ~FakeKeyTap() override
    {
        if (latest && *latest == this) *latest = nullptr;
    }
    FakeKeyTap** latest = nullptr;  // the backend's last tap, forgotten when this one is deleted
    EventTapBackend::Callback callback;
    bool enabled = false;
    bool seesAll = false;
    int enableCalls = 0;
    QList<KeyCombo> watched;
    bool setEnabled(bool on) override { enabled = on; enableCalls += on; return true; }
    void setWatchedKeys(const QList<KeyCombo>& keys) override { watched = keys; }
    bool keyboardTaken = false;  // another program holds the keyboard
    bool setSeesAllKeys(bool on) override
    {
        seesAll = on;
        return !on || !keyboardTaken;
    }
    std::optional<quint64> modifiers;  // held on the keyboard now, when known
    std::optional<quint64> modifierFlags() override { return modifiers; }
    // Read and written from a watchdog's thread.
    std::atomic<int> keyDown{-1};  // the one key down on the keyboard, -1 for none
    std::atomic<int> releasedNow{0};
    std::optional<bool> isKeyDown(quint32 keyCode) override { return keyDown == int(keyCode); }
    void releaseKeyboardNow() override { ++releasedNow; }
    bool send(KeyEventType type, quint32 keyCode = 0, quint64 flags = 0, const QString& text = {})
    {
        return callback(KeyEvent{type, keyCode, flags, false, text});
    }
};

struct FakeEventTapBackend : EventTapBackend {
    bool refuse = false;
    bool ownWindowsOnly = false;  // as on Wayland
    bool seesOnlyOwnWindows() const override { return ownWindowsOnly; }
    int created = 0;
    FakeKeyTap* last = nullptr;
    quint64 lastMask = 0;
    std::unique_ptr<KeyTap> createTap(quint64 mask, Callback callback) override
    {
        if (refuse) return nullptr;
        ++created;
        lastMask = mask;
        auto tap = std::make_unique<FakeKeyTap>();
        tap->callback = std::move(callback);
        tap->latest = &last;
        last = tap.get();
        return tap;
    }
};

struct FakeWorkspace : Workspace {
    std::optional<AppInfo> front;
    QList<AppInfo> activated;  // by activateApplication
    QHash<QString, QIcon> icons;
    QHash<QString, AppInfo> applicationFiles;
    std::optional<AppInfo> frontmostApplication() override { return front; }
    qint64 ownPid() const override { return 4242; }
    void activate(const AppInfo& app) { front = app; emit applicationActivated(app); }
    void activateApplication(const AppInfo& app) override { activated << app; activate(app); }
    QIcon applicationIcon(const QString& bundleId) override { return icons.value(bundleId); }
    QString applicationsFolder() override { return QStringLiteral("/fake/applications"); }
    std::optional<AppInfo> applicationAt(const QString& path) override
    {
        if (!applicationFiles.contains(path)) return std::nullopt;
        return applicationFiles.value(path);
    }
    QList<AppInfo> running;
    QList<qint64> closed;  // by closeWindows
    QList<AppInfo> runningApplications() override { return running; }
    bool closeWindows(qint64 pid) override
    {
        for (const AppInfo& app : std::as_const(running))
            if (app.pid == pid) return closed << pid, true;
        return false;
    }
};

// A pasteboard with one set of typed contents; every write or set() is one change.
struct FakePasteboard : Pasteboard {
    qint64 count = 0;
    QHash<QString, QByteArray> raw;  // by type name, as types() lists them
    std::optional<QString> text;
    QHash<Form, QByteArray> forms;
    QStringList paths;
    std::optional<QColor> colour;
    QList<Contents> writes;

    void clear()
    {
        raw.clear();
        text.reset();
        forms.clear();
        paths.clear();
        colour.reset();
    }
    // Another application copies: the new contents replace the old.
    void copyText(const QString& t, const QHash<QString, QByteArray>& extraTypes = {})
    {
        clear();
        text = t;
        raw = extraTypes;
        raw.insert(QStringLiteral("text/plain"), t.toUtf8());
        ++count;
    }
    qint64 changeCount() override { return count; }
    QStringList types() override
    {
        QStringList list = raw.keys();
        list.sort();
        return list;
    }
    QByteArray dataForType(const QString& type) override { return raw.value(type); }
    QByteArray data(Form form) override { return forms.value(form); }
    std::optional<QString> string() override { return text; }
    QStringList filePaths() override { return paths; }
    std::optional<QColor> color() override { return colour; }
    void write(const Contents& contents) override
    {
        writes << contents;
        clear();
        text = contents.string;
        if (text) raw.insert(QStringLiteral("text/plain"), text->toUtf8());
        if (!contents.rtf.isEmpty()) forms.insert(Form::Rtf, contents.rtf);
        if (!contents.html.isEmpty()) forms.insert(Form::Html, contents.html);
        if (!contents.png.isEmpty()) forms.insert(Form::Png, contents.png);
        paths = contents.filePaths;
        colour = contents.color;
        ++count;
    }
};

struct FakeKeySynth : KeySynth {
    int pastes = 0;
    bool canPost = true;
    bool canPaste() const override { return canPost; }
    bool postPaste() override { ++pastes; return canPost; }
};

struct FakeScreens : Screens {
    QList<ScreenInfo> list;
    bool blends = true;
    QList<ScreenInfo> screens() override { return list; }
    bool blendsWindows() override { return blends; }
};

struct FakeLoginItem : LoginItem {
    LoginItemStatus state = LoginItemStatus::NotRegistered;
    bool failRegistration = false;
    LoginItemStatus status() override { return state; }
    bool registerItem() override
    {
        if (failRegistration) return false;
        state = LoginItemStatus::Enabled;
        return true;
    }
    bool unregisterItem() override { state = LoginItemStatus::NotRegistered; return true; }
};

struct FakeSettingsStorage : SettingsStorage {
    QVariantMap stored;
    QString problem;
    int saves = 0;
    Loaded load() override { return {stored, problem}; }
    bool save(const QVariantMap& values) override { stored = values; ++saves; return true; }
};

// Windows with exact frames (no size increments), listed in creation order; the stacking
// order is bottom to top.
struct FakeWindow {
    qint64 pid = 0;
    QRectF frame;
    bool standard = true;
    bool minimized = false;
    bool fullScreen = false;
    bool readable = true;  // false: the application does not answer
    bool onCurrentDesktop = true;
    QSizeF step{};  // the size grows in steps of this much from the wanted size's origin
};

struct FakeWindowServer : WindowServer {
    QMap<WindowId, FakeWindow> windowsById;
    QList<WindowId> order;
    QList<WindowId> stacking;
    std::optional<WindowId> active;
    bool translucent = true;
    int setFrameCalls = 0;

    WindowId add(qint64 pid, const QRectF& frame, bool standard = true)
    {
        const WindowId id = 0x100 + order.size();
        windowsById.insert(id, FakeWindow{pid, frame, standard});
        order << id;
        stacking << id;
        return id;
    }
    void close(WindowId id)
    {
        windowsById.remove(id);
        order.removeAll(id);
        stacking.removeAll(id);
        if (active == id) active.reset();
    }
    std::optional<QRectF> frame(WindowId id) override
    {
        if (!windowsById.contains(id) || !windowsById[id].readable) return std::nullopt;
        return windowsById[id].frame;
    }
    void setFrame(WindowId id, const QRectF& frame) override
    {
        ++setFrameCalls;
        if (windowsById.contains(id) && windowsById[id].readable) windowsById[id].frame = attainableFrame(id, frame);
    }
    bool isStandard(WindowId id) override { return windowsById.value(id).standard; }
    bool isMinimized(WindowId id) override { return windowsById.value(id).minimized; }
    bool isFullScreen(WindowId id) override { return windowsById.value(id).fullScreen; }
    bool isOnCurrentDesktop(WindowId id) override { return windowsById.value(id).onCurrentDesktop; }
    QRectF attainableFrame(WindowId id, const QRectF& wanted) override
    {
        const QSizeF step = windowsById.value(id).step;
        if (step.isEmpty()) return wanted;
        return QRectF(wanted.topLeft(), QSizeF(std::floor(wanted.width() / step.width()) * step.width(),
                                               std::floor(wanted.height() / step.height()) * step.height()));
    }
    std::optional<WindowRef> windowAt(const QPointF& p) override
    {
        for (auto it = stacking.crbegin(); it != stacking.crend(); ++it) {
            const FakeWindow& w = windowsById[*it];
            if (!w.minimized && w.frame.contains(p)) return WindowRef{*it, w.pid};
        }
        return std::nullopt;
    }
    QList<WindowId> windows(qint64 pid) override
    {
        QList<WindowId> list;
        for (WindowId id : order)
            if (windowsById[id].pid == pid) list << id;
        return list;
    }
    std::optional<WindowId> focusedWindow(qint64 pid) override
    {
        if (active && windowsById.value(*active).pid == pid) return active;
        return std::nullopt;
    }
    std::optional<WindowId> mainWindow(qint64) override { return std::nullopt; }
    QList<qint64> regularApplications() override
    {
        QList<qint64> pids;
        for (WindowId id : order)
            if (windowsById[id].standard && !pids.contains(windowsById[id].pid)) pids << windowsById[id].pid;
        return pids;
    }
    bool canShowTranslucentWindows() override { return translucent; }
};

struct FakeMouseMonitor : MouseMonitor {
    bool started = false;
    bool followable = true;
    QPointF at;
    bool start() override { return started = followable; }
    bool canFollow() const override { return followable; }
    void stop() override { started = false; }
    QPointF location() override { return at; }
    void down(QPointF p) { at = p; emit leftMouseDown(p); }
    void drag(QPointF p) { at = p; emit leftMouseDragged(p); }
    void up(QPointF p) { at = p; emit leftMouseUp(p); }
};

// The switcher's windows: running applications, the on-screen list (front to back) and each
// application's own list, as plain fields.
struct FakeWindowCatalog : WindowCatalog {
    QList<RunningApp> apps;
    QList<ScreenWindow> onScreen;
    QHash<qint64, QList<AppWindow>> appWindows;  // an application missing here cannot be asked
    // Windows of one of the applications of a process that shows several.
    QHash<QString, QList<AppWindow>> windowsOfBundle;
    QList<QPair<WindowId, bool>> raised;          // element, unminimize
    QList<qint64> activated;
    QList<RunningApp> runningApplications() override { return apps; }
    QList<ScreenWindow> onScreenWindows() override { return onScreen; }
    std::optional<QList<AppWindow>> applicationWindows(const RunningApp& app) override
    {
        if (windowsOfBundle.contains(app.bundleId)) return windowsOfBundle.value(app.bundleId);
        if (!appWindows.contains(app.pid)) return std::nullopt;
        return appWindows.value(app.pid);
    }
    void raise(WindowId element, bool unminimize) override { raised << qMakePair(element, unminimize); }
    void activate(qint64 pid) override { activated << pid; }
};

// Scripts answered from a table by the bundle identifier they name; others fail with -1.
// Thread-safe enough for the tests: the table is filled before any run.
struct FakeScripting : Scripting {
    bool available = true;
    QHash<QString, Result> answers;
    std::atomic<int> runs{0};
    bool isAvailable() const override { return available; }
    Result run(const QString& source) override
    {
        ++runs;
        for (auto it = answers.cbegin(); it != answers.cend(); ++it)
            if (source.contains(QStringLiteral("\"%1\"").arg(it.key()))) return it.value();
        return Failure{-1};
    }
};

struct FakeNotifications : Notifications {
    QStringList shown;  // title, then body, of each notification
    bool serviceRuns = true;
    void show(const QString& title, const QString& body) override
    {
        if (!serviceRuns) return emit unavailable();
        shown << title << body;
    }
    int withdrawn = 0;
    void withdraw() override { ++withdrawn; }
};

struct FakeEdgeTiling : EdgeTiling {
    QString place;  // empty: the window manager does not tile on its own
    QString switchOffPlace() override { return place; }
};

struct FakeSystemSwitcher : SystemSwitcher {
    bool available = true;
    bool enabled = true;  // the system's own switcher keys are on
    QString place;        // where the user frees them; empty when not known
    QString switchOffPlace() const override { return place; }
    QList<bool> calls;
    bool setEnabled(bool on) override
    {
        calls << on;
        if (available) enabled = on;
        return available;
    }
};

// A Platform made of fakes, with typed access to each.
struct FakePlatform : Platform {
    FakeAccessibility* fakeAccessibility;
    FakeKeyboardLayout* fakeLayout;
    FakeHotKeyService* fakeHotKeys;
    FakeEventTapBackend* fakeTaps;
    FakeWorkspace* fakeWorkspace;
    FakeScreens* fakeScreens;
    FakeLoginItem* fakeLoginItem;
    FakeSettingsStorage* fakeSettings;
    FakePasteboard* fakePasteboard;
    FakeKeySynth* fakeKeySynth;
    FakeWindowServer* fakeWindows;
    FakeMouseMonitor* fakeMouse;
    FakeWindowCatalog* fakeCatalog;
    FakeScripting* fakeScripting;
    FakeProcessTable* fakeProcesses;
    FakeGamma* fakeGamma;
    FakePowerAssertion* fakePower;
    FakeUserFiles* fakeUserFiles;
    FakeNotifications* fakeNotifications;
    FakeEdgeTiling* fakeEdgeTiling;
    FakeSystemSwitcher* fakeSystemSwitcher;

    FakePlatform()
    {
        accessibility.reset(fakeAccessibility = new FakeAccessibility);
        keyboardLayout.reset(fakeLayout = new FakeKeyboardLayout);
        hotKeys.reset(fakeHotKeys = new FakeHotKeyService);
        eventTaps.reset(fakeTaps = new FakeEventTapBackend);
        workspace.reset(fakeWorkspace = new FakeWorkspace);
        screens.reset(fakeScreens = new FakeScreens);
        loginItem.reset(fakeLoginItem = new FakeLoginItem);
        settings.reset(fakeSettings = new FakeSettingsStorage);
        pasteboard.reset(fakePasteboard = new FakePasteboard);
        keySynth.reset(fakeKeySynth = new FakeKeySynth);
        windowServer.reset(fakeWindows = new FakeWindowServer);
        mouseMonitor.reset(fakeMouse = new FakeMouseMonitor);
        windowCatalog.reset(fakeCatalog = new FakeWindowCatalog);
        scripting.reset(fakeScripting = new FakeScripting);
        processes.reset(fakeProcesses = new FakeProcessTable);
        gamma.reset(fakeGamma = new FakeGamma);
        power.reset(fakePower = new FakePowerAssertion);
        userFiles.reset(fakeUserFiles = new FakeUserFiles);
        notifications.reset(fakeNotifications = new FakeNotifications);
        edgeTiling.reset(fakeEdgeTiling = new FakeEdgeTiling);
        systemSwitcher.reset(fakeSystemSwitcher = new FakeSystemSwitcher);
        overlay = std::make_unique<WindowOverlay>();
    }
};

}  // namespace orlo::fakes
