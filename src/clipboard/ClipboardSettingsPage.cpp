#include "clipboard/ClipboardSettingsPage.h"
#include "kit/AppListEditor.h"
#include "kit/Symbols.h"
#include "kit/ToggleSwitch.h"
#include "clipboard/ClipboardSettings.h"
#include "clipboard/ClipboardStore.h"
#include "input/Shortcut.h"
#include "input/ShortcutRecorder.h"
#include "input/TakenKeysBox.h"
#include "platform/Workspace.h"
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace orlo {

ClipboardSettingsPage::ClipboardSettingsPage(ClipboardSettings& settings, ClipboardStore& store, KeyboardLayout& layout,
                                             Workspace& workspace, HotKeys& hotKeys, QWidget* parent)
    : QWidget(parent), settings_(settings), store_(store), layout_(layout), workspace_(workspace), hotKeys_(hotKeys)
{
    setObjectName(QStringLiteral("ClipboardSettings"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 8, 0, 16);
    column->setSpacing(12);
    column->addWidget(historyGroup());
    column->addWidget(pasteGroup());
    column->addWidget(excludedGroup());

    auto* clear = new QPushButton(tr("Clear History…"), this);
    clear->setObjectName(QStringLiteral("clearHistory"));
    clear->setStyleSheet(QStringLiteral("QPushButton { color: #C0392B; }"));
    connect(clear, &QPushButton::clicked, this, &ClipboardSettingsPage::confirmClear);
    auto* clearRow = new QHBoxLayout;
    clearRow->addWidget(clear);
    clearRow->addStretch(1);
    column->addLayout(clearRow);
    column->addStretch(1);

    connect(&store_, &ClipboardStore::itemsChanged, this, &ClipboardSettingsPage::refreshStatus);
    connect(&settings_, &ClipboardSettings::changed, this, [this] {
        refreshPaste();
        refreshExcluded();
    });
    refreshStatus();
    refreshPaste();
    refreshExcluded();
}

QWidget* ClipboardSettingsPage::historyGroup()
{
    auto* box = new QGroupBox(this);
    auto* grid = new QVBoxLayout(box);

    auto* shortcutRow = new QHBoxLayout;
    shortcutRow->addWidget(new QLabel(tr("Open history"), box), 1);
    auto* recorder = new ShortcutRecorder(layout_, settings_.shortcut(), ClipboardSettings::DefaultShortcut, box);
    recorder->setObjectName(QStringLiteral("shortcut"));
    connect(recorder, &ShortcutRecorder::shortcutChanged, this, [this](const Shortcut& s) { settings_.setShortcut(s); });
    shortcutRow->addWidget(recorder);
    grid->addLayout(shortcutRow);
    // A shortcut another program keeps, or one this compositor binds only in its configuration.
    grid->addWidget(new TakenKeysBox(hotKeys_, QStringLiteral("clipboard"), layout_, box));

    auto* sizeRow = new QHBoxLayout;
    sizeRow->addWidget(new QLabel(tr("Keep up to"), box), 1);
    auto* size = new QSpinBox(box);
    size->setObjectName(QStringLiteral("maxItems"));
    size->setRange(10, 100000);
    size->setSingleStep(10);
    size->setSuffix(tr(" items"));
    size->setValue(int(std::clamp<qint64>(settings_.maxItems(), 10, 100000)));
    size->setKeyboardTracking(false);
    connect(size, &QSpinBox::valueChanged, this, [this](int value) { settings_.setMaxItems(value); });
    sizeRow->addWidget(size);
    grid->addLayout(sizeRow);

    status_ = new QLabel(box);
    status_->setObjectName(QStringLiteral("status"));
    status_->setEnabled(false);
    grid->addWidget(status_);
    return box;
}

QWidget* ClipboardSettingsPage::pasteGroup()
{
    auto* box = new QGroupBox(this);
    auto* grid = new QVBoxLayout(box);
    auto* row = new QHBoxLayout;
    auto* label = new QLabel(tr("Paste automatically"), box);
    auto* toggle = new ToggleSwitch(box);
    toggle->setObjectName(QStringLiteral("autoPaste"));
    toggle->setAccessibleName(label->text());
    toggle->show(settings_.autoPaste());
    connect(toggle, &ToggleSwitch::toggled, this, [this](bool on) { settings_.setAutoPaste(on); });
    connect(&settings_, &ClipboardSettings::changed, toggle, [this, toggle] { toggle->show(settings_.autoPaste()); });
    row->addWidget(label, 1);
    row->addWidget(toggle);
    grid->addLayout(row);
    pasteExplanation_ = new QLabel(box);
    pasteExplanation_->setObjectName(QStringLiteral("autoPasteExplanation"));
    pasteExplanation_->setWordWrap(true);
    pasteExplanation_->setEnabled(false);
    grid->addWidget(pasteExplanation_);
    return box;
}

QWidget* ClipboardSettingsPage::excludedGroup()
{
    excluded_ = new AppListEditor(tr("Ignore copies from"), tr("Ignore"), workspace_, this);
    connect(excluded_, &AppListEditor::appsChanged, this, [this](const QList<AppListEditor::App>& apps) {
        QList<ExcludedApp> list;
        for (const AppListEditor::App& app : apps) list.append({app.id, app.name.isEmpty() ? app.id : app.name});
        settings_.setExcluded(list);
    });
    auto* footer = new QLabel(tr("Items marked as concealed or transient by password managers are always ignored."), excluded_);
    footer->setWordWrap(true);
    footer->setEnabled(false);
    excluded_->layout()->addWidget(footer);
    return excluded_;
}

void ClipboardSettingsPage::refreshStatus()
{
    qint64 pinned = 0;
    for (const ClipItem& item : store_.items()) pinned += item.pinned;
    status_->setText(tr("%1 items, %2 pinned").arg(store_.items().size()).arg(pinned));
}

void ClipboardSettingsPage::refreshPaste()
{
    const QString pasteKey = Shortcut::paste().label(layout_);
    pasteExplanation_->setText(settings_.autoPaste()
                                   ? tr("Choosing an item pastes it into the app you were using. Needs the Accessibility permission.")
                                   : tr("Choosing an item only copies it; press %1 yourself.").arg(pasteKey));
}

void ClipboardSettingsPage::refreshExcluded()
{
    QList<AppListEditor::App> apps;
    for (const ExcludedApp& app : settings_.excluded()) apps.append({app.bundleID, app.name});
    excluded_->setApps(apps);
}

void ClipboardSettingsPage::confirmClear()
{
    QMessageBox box(QMessageBox::Warning, tr("Clear clipboard history?"), tr("Clear clipboard history?"), QMessageBox::NoButton, this);
    box.setInformativeText(tr("Pinned items are kept."));
    QPushButton* clear = box.addButton(tr("Clear History"), QMessageBox::DestructiveRole);
    box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() == clear) store_.clearHistory();
}

}  // namespace orlo
