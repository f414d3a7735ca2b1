#include "clipboard/ClipboardSettingsPage.h"
#include "app/Symbols.h"
#include "app/ToggleSwitch.h"
#include "clipboard/ClipboardSettings.h"
#include "clipboard/ClipboardStore.h"
#include "input/Shortcut.h"
#include "input/ShortcutRecorder.h"
#include "platform/Workspace.h"
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace orlo {

ClipboardSettingsPage::ClipboardSettingsPage(ClipboardSettings& settings, ClipboardStore& store, KeyboardLayout& layout,
                                             Workspace& workspace, QWidget* parent)
    : QWidget(parent), settings_(settings), store_(store), layout_(layout), workspace_(workspace)
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
    auto* box = new QGroupBox(tr("Ignore copies from"), this);
    auto* grid = new QVBoxLayout(box);
    excludedRows_ = new QVBoxLayout;
    excludedRows_->setSpacing(2);
    grid->addLayout(excludedRows_);

    auto* add = new QPushButton(symbolIcon(QStringLiteral("plus")), tr("Add App…"), box);
    add->setObjectName(QStringLiteral("addExcluded"));
    connect(add, &QPushButton::clicked, this, &ClipboardSettingsPage::chooseApplications);
    auto* addRow = new QHBoxLayout;
    addRow->addWidget(add);
    addRow->addStretch(1);
    grid->addLayout(addRow);

    auto* footer = new QLabel(tr("Items marked as concealed or transient by password managers are always ignored."), box);
    footer->setWordWrap(true);
    footer->setEnabled(false);
    grid->addWidget(footer);
    return box;
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
    // Later: the click of a row's own "Remove" button may be what brought us here.
    while (QLayoutItem* item = excludedRows_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    const QList<ExcludedApp> apps = settings_.excluded();
    for (const ExcludedApp& app : apps) {
        auto* row = new QWidget;
        row->setObjectName(QStringLiteral("excluded.") + app.bundleID);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        auto* icon = new QLabel(row);
        const QIcon appIcon = workspace_.applicationIcon(app.bundleID);
        icon->setPixmap(appIcon.isNull() ? symbolPixmap(QStringLiteral("app"), 16) : appIcon.pixmap(16, 16));
        auto* name = new QLabel(app.name, row);
        // The same application may be listed under its macOS and its Linux identity.
        auto* id = new QLabel(app.bundleID, row);
        id->setEnabled(false);
        auto* remove = new QPushButton(tr("Remove"), row);
        connect(remove, &QPushButton::clicked, this, [this, bundleID = app.bundleID] {
            QList<ExcludedApp> list = settings_.excluded();
            list.removeIf([&](const ExcludedApp& a) { return a.bundleID == bundleID; });
            settings_.setExcluded(list);
        });
        line->addWidget(icon);
        line->addWidget(name);
        line->addWidget(id, 1);
        line->addWidget(remove);
        excludedRows_->addWidget(row);
    }
}

void ClipboardSettingsPage::addApplications(const QStringList& paths)
{
    QList<ExcludedApp> list = settings_.excluded();
    const qsizetype before = list.size();
    for (const QString& path : paths) {
        const auto app = workspace_.applicationAt(path);
        if (!app || app->bundleId.isEmpty()) continue;
        if (std::any_of(list.begin(), list.end(), [&](const ExcludedApp& a) { return a.bundleID == app->bundleId; })) continue;
        list.append({app->bundleId, app->name.isEmpty() ? app->bundleId : app->name});
    }
    if (list.size() != before) settings_.setExcluded(list);
}

void ClipboardSettingsPage::chooseApplications()
{
    QFileDialog dialog(this, tr("Ignore copies from"), workspace_.applicationsFolder());
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setLabelText(QFileDialog::Accept, tr("Ignore"));
#ifndef Q_OS_MACOS
    dialog.setNameFilter(tr("Applications (*.desktop)"));
#endif
    if (dialog.exec() == QDialog::Accepted) addApplications(dialog.selectedFiles());
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
