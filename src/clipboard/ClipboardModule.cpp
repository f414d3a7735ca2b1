#include "clipboard/ClipboardModule.h"
#include "kit/Permissions.h"
#include "clipboard/ClipToast.h"
#include "clipboard/ClipboardLog.h"
#include "clipboard/ClipboardPicker.h"
#include "clipboard/ClipboardSettings.h"
#include "clipboard/ClipboardSettingsPage.h"
#include "clipboard/ClipboardStore.h"
#include "platform/Platform.h"
#include <QPointer>
#include <QTimer>

namespace orlo {

ClipboardModule::ClipboardModule(OrloContext& context, QObject* parent)
    : OrloModule(context.defaults, parent), context_(context)
{
    Platform& platform = context.platform;
    settings_ = std::make_unique<ClipboardSettings>(context.defaults);
    store_ = std::make_unique<ClipboardStore>(*settings_, *platform.pasteboard, *platform.workspace);
    picker_ = std::make_unique<ClipboardPicker>(
        *store_, ClipboardPicker::Ports{*platform.keyboardLayout, *platform.screens, *platform.workspace});
    QPointer<ClipboardModule> self(this);
    picker_->onPaste = [self](const ClipItem& item, bool plainText) {
        if (self) self->paste(item, plainText);
    };
    picker_->needsAccessibilityHint = [self] {
        return self && self->settings_->autoPaste() && !self->context_.permissions.accessibility();
    };
    settings_->onShortcutChange = [self] {
        if (self && self->running_) self->registerHotKey();
    };
    settings_->onMaxItemsChange = [self] {
        if (self) self->store_->trim();
    };
    // Orlo may end without stopping its modules: catch the last copy and save what is pending.
    connect(&context.events, &AppEvents::willTerminate, this, &ClipboardModule::finish);
}

ClipboardModule::~ClipboardModule() = default;

void ClipboardModule::start()
{
    if (running_) return;
    running_ = true;
    store_->start();
    registerHotKey();
    // Once start-up is over (the tray icon up), not during it.
    QTimer::singleShot(PreparePickerDelayMs, picker_.get(), &ClipboardPicker::prepare);
    Workspace& workspace = *context_.platform.workspace;
    rememberExternal(workspace.frontmostApplication());
    activationObserver_ = connect(&workspace, &Workspace::applicationActivated, this,
                                  [this](const AppInfo& app) { rememberExternal(app); });
}

void ClipboardModule::stop()
{
    if (!running_) return;
    running_ = false;
    store_->stop();
    context_.hotKeys.unregister(hotKey_);
    hotKey_.reset();
    context_.hotKeys.reportTaken(id(), {});
    picker_->close();
    disconnect(activationObserver_);
}

void ClipboardModule::finish()
{
    qCDebug(lcClipboard, "Orlo is ending: saving the history");
    if (running_) store_->poll();
    store_->stop();
}

void ClipboardModule::registerHotKey()
{
    if (hotKey_) context_.hotKeys.unregister(hotKey_);
    hotKey_ = context_.hotKeys.registerHotKey(
        settings_->shortcut(), [this] { togglePicker(); },
        [this](const KeyEvent& key) { picker_->typeWhileOpening(key); });
    picker_->shortcut = settings_->shortcut().combo();
    if (!hotKey_) qCWarning(lcClipboard, "the clipboard shortcut could not be registered");
    const HotKeys::Taken taken{id(), tr("Open history"), settings_->shortcut(), QStringLiteral("orlo clipboard")};
    context_.hotKeys.reportTaken(id(), hotKey_ ? QList<HotKeys::Taken>{} : QList<HotKeys::Taken>{taken});
}

bool ClipboardModule::isOrlo(const AppInfo& app) const { return app.pid == context_.platform.workspace->ownPid(); }

void ClipboardModule::rememberExternal(const std::optional<AppInfo>& app)
{
    if (!app || isOrlo(*app)) return;
    lastExternalApp_ = app;
}

void ClipboardModule::togglePicker()
{
    if (picker_->isVisible()) {
        picker_->close();
        return;
    }
    if (!store_->isLoaded()) store_->load();
    const auto front = context_.platform.workspace->frontmostApplication();
    // Opened over one of Orlo's own windows, it pastes into the application used before.
    pasteTarget_ = front && !isOrlo(*front) ? front : lastExternalApp_;
    picker_->show();
}

void ClipboardModule::paste(const ClipItem& item, bool plainText)
{
    store_->copyToPasteboard(item, plainText);
    picker_->close();
    const auto target = std::exchange(pasteTarget_, std::nullopt);
    if (!settings_->autoPaste()) {
        ClipToast::show(tr("Copied"));
        return;
    }
    if (!context_.platform.keySynth->canPaste()) {
        ClipToast::show(tr("Copied: press Ctrl+V"));
        return;
    }
    if (!context_.permissions.accessibility()) {
        ClipToast::show(tr("Copied. Allow Accessibility in Orlo to paste automatically."));
        return;
    }
    if (target) context_.platform.workspace->activateApplication(*target);
    QTimer::singleShot(PasteDelayMs, this, &ClipboardModule::sendCommandV);
}

void ClipboardModule::sendCommandV()
{
    const bool sent = context_.platform.keySynth->postPaste();
    qCDebug(lcClipboard, sent ? "paste keystroke sent" : "paste keystroke could not be sent");
}

QWidget* ClipboardModule::settingsView()
{
    return new ClipboardSettingsPage(*settings_, *store_, *context_.platform.keyboardLayout, *context_.platform.workspace,
                                     context_.hotKeys);
}

}  // namespace orlo
