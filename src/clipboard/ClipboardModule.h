#pragma once
#include "kit/OrloContext.h"
#include "kit/OrloModule.h"
#include "clipboard/ClipItem.h"
#include "input/HotKeys.h"
#include "platform/Workspace.h"
#include <memory>
#include <optional>

namespace orlo {

class ClipboardPicker;
class ClipboardSettings;
class ClipboardStore;

// Clipboard history as a module: records every copy, opens the picker on its shortcut and
// pastes the chosen item into the application that was in front.
class ClipboardModule : public OrloModule {
    Q_OBJECT
public:
    static constexpr int PasteDelayMs = 150;
    static constexpr int PreparePickerDelayMs = 1000;

    explicit ClipboardModule(OrloContext& context, QObject* parent = nullptr);
    ~ClipboardModule() override;

    QString id() const override { return QStringLiteral("clipboard"); }
    QString title() const override { return tr("Clipboard History"); }
    QString symbol() const override { return QStringLiteral("doc.on.clipboard"); }
    QString summary() const override { return tr("Everything you copy, searchable, one key to paste."); }
    bool needsAccessibility() const override { return false; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;

    // The hot key's action: opens the picker, or closes it when it is open.
    void togglePicker();
    // The picker's choice: put the item on the pasteboard, close, and paste it where the user was.
    void paste(const ClipItem& item, bool plainText);

    bool isRunning() const { return running_; }
    ClipboardSettings& settings() { return *settings_; }
    ClipboardStore& store() { return *store_; }
    ClipboardPicker& picker() { return *picker_; }
    std::optional<AppInfo> pasteTarget() const { return pasteTarget_; }
    std::optional<AppInfo> lastExternalApp() const { return lastExternalApp_; }

private:
    void registerHotKey();
    void rememberExternal(const std::optional<AppInfo>& app);
    void sendCommandV();
    bool isOrlo(const AppInfo& app) const;
    void finish();

    OrloContext& context_;
    std::unique_ptr<ClipboardSettings> settings_;
    std::unique_ptr<ClipboardStore> store_;
    std::unique_ptr<ClipboardPicker> picker_;
    std::optional<HotKeys::Token> hotKey_;
    bool running_ = false;
    QMetaObject::Connection activationObserver_;
    std::optional<AppInfo> lastExternalApp_;
    std::optional<AppInfo> pasteTarget_;
};

}  // namespace orlo
