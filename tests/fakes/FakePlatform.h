#pragma once
// An in-memory platform: every port with its state in public fields, for unit tests.
#include "platform/Platform.h"
#include <QHash>
#include <QKeyEvent>
#include <QSet>

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
        return KeyEvent{KeyEventType::KeyDown, quint32(e.nativeScanCode()), quint64(e.nativeModifiers()), false};
    }
};

struct FakeHotKeyService : HotKeyService {
    QSet<quint32> refusedKeyCodes;
    QHash<quint32, QPair<quint32, quint32>> registered;  // id -> key code, Carbon modifiers
    bool registerHotKey(quint32 id, quint32 keyCode, quint32 mods) override
    {
        if (refusedKeyCodes.contains(keyCode)) return false;
        registered.insert(id, {keyCode, mods});
        return true;
    }
    void unregisterHotKey(quint32 id) override { registered.remove(id); }
    void press(quint32 id) { emit pressed(id); }
};

struct FakeKeyTap : KeyTap {
    EventTapBackend::Callback callback;
    bool enabled = false;
    bool seesAll = false;
    int enableCalls = 0;
    QList<KeyCombo> watched;
    bool setEnabled(bool on) override { enabled = on; enableCalls += on; return true; }
    void setWatchedKeys(const QList<KeyCombo>& keys) override { watched = keys; }
    bool setSeesAllKeys(bool on) override { seesAll = on; return true; }
    bool send(KeyEventType type, quint32 keyCode = 0, quint64 flags = 0)
    {
        return callback(KeyEvent{type, keyCode, flags, false});
    }
};

struct FakeEventTapBackend : EventTapBackend {
    bool refuse = false;
    int created = 0;
    FakeKeyTap* last = nullptr;
    std::unique_ptr<KeyTap> createTap(quint64, Callback callback) override
    {
        if (refuse) return nullptr;
        ++created;
        auto tap = std::make_unique<FakeKeyTap>();
        tap->callback = std::move(callback);
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
    bool postPaste() override { ++pastes; return true; }
};

struct FakeScreens : Screens {
    QList<ScreenInfo> list;
    QList<ScreenInfo> screens() override { return list; }
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
    }
};

}  // namespace orlo::fakes
