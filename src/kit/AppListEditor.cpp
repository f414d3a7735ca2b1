#include "kit/AppListEditor.h"
#include "kit/Symbols.h"
#include "platform/Workspace.h"
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace orlo {

AppListEditor::AppListEditor(const QString& title, const QString& dialogAccept, Workspace& workspace, QWidget* parent)
    : QGroupBox(title, parent), workspace_(workspace), dialogAccept_(dialogAccept)
{
    auto* column = new QVBoxLayout(this);
    rows_ = new QVBoxLayout;
    rows_->setSpacing(2);
    column->addLayout(rows_);
    auto* add = new QPushButton(symbolIcon(QStringLiteral("plus")), tr("Add App…"), this);
    add->setObjectName(QStringLiteral("addExcluded"));
    connect(add, &QPushButton::clicked, this, &AppListEditor::chooseApplications);
    auto* addRow = new QHBoxLayout;
    addRow->addWidget(add);
    addRow->addStretch(1);
    column->addLayout(addRow);
    rebuildRows();
}

void AppListEditor::setEmptyText(const QString& text)
{
    emptyText_ = text;
    rebuildRows();
}

void AppListEditor::setApps(const QList<App>& apps)
{
    if (apps == apps_) return;
    apps_ = apps;
    rebuildRows();
}

void AppListEditor::change(const QList<App>& apps)
{
    setApps(apps);
    emit appsChanged(apps_);
}

void AppListEditor::rebuildRows()
{
    // Later: the click of a row's own Remove button may be what brought us here.
    while (QLayoutItem* item = rows_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    if (apps_.isEmpty() && !emptyText_.isEmpty()) {
        auto* none = new QLabel(emptyText_, this);
        none->setObjectName(QStringLiteral("noneExcluded"));
        none->setEnabled(false);
        rows_->addWidget(none);
    }
    for (const App& app : std::as_const(apps_)) {
        auto* row = new QWidget(this);
        row->setObjectName(QStringLiteral("excluded.") + app.id);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        auto* icon = new QLabel(row);
        const QIcon appIcon = workspace_.applicationIcon(app.id);
        icon->setPixmap(appIcon.isNull() ? symbolPixmap(QStringLiteral("app"), 16) : appIcon.pixmap(16, 16));
        line->addWidget(icon);
        if (!app.name.isEmpty()) line->addWidget(new QLabel(app.name, row));
        // The same application may be listed under its macOS and its Linux identity.
        auto* id = new QLabel(app.id, row);
        id->setEnabled(app.name.isEmpty());
        line->addWidget(id, 1);
        auto* remove = new QPushButton(tr("Remove"), row);
        connect(remove, &QPushButton::clicked, this, [this, removed = app.id] {
            QList<App> apps = apps_;
            apps.removeIf([&](const App& a) { return a.id == removed; });
            change(apps);
        });
        line->addWidget(remove);
        rows_->addWidget(row);
    }
}

void AppListEditor::addApplications(const QStringList& paths)
{
    QList<App> apps = apps_;
    for (const QString& path : paths) {
        const auto app = workspace_.applicationAt(path);
        if (!app || app->bundleId.isEmpty()) continue;
        if (std::any_of(apps.cbegin(), apps.cend(), [&](const App& a) { return a.id == app->bundleId; })) continue;
        apps.append({app->bundleId, app->name});
    }
    if (apps.size() != apps_.size()) change(apps);
}

void AppListEditor::chooseApplications()
{
    QFileDialog dialog(this, title(), workspace_.applicationsFolder());
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setLabelText(QFileDialog::Accept, dialogAccept_);
#ifndef Q_OS_MACOS
    dialog.setNameFilter(tr("Applications (*.desktop)"));
#endif
    if (dialog.exec() == QDialog::Accepted) addApplications(dialog.selectedFiles());
}

}  // namespace orlo
