#include "app/GeneralSettings.h"
#include "app/AccessibilityRow.h"
#include "app/AppModel.h"
#include "kit/Permissions.h"
#include "kit/Symbols.h"
#include "kit/ToggleSwitch.h"
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSystemTrayIcon>
#include <QVBoxLayout>

namespace orlo {

GeneralSettings::GeneralSettings(AppModel& model, QWidget* parent) : QWidget(parent)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 16, 20, 16);

    auto* startup = new QGroupBox(tr("Startup"), this);
    auto* startupRow = new QHBoxLayout(startup);
    auto* loginLabel = new QLabel(tr("Open at login"), startup);
    auto* login = new ToggleSwitch(startup);
    login->setObjectName(QStringLiteral("launchAtLogin"));
    login->setAccessibleName(loginLabel->text());
    startupRow->addWidget(loginLabel, 1);
    startupRow->addWidget(login);
    column->addWidget(startup);

    auto* permissions = new QGroupBox(tr("Permissions"), this);
    auto* permissionColumn = new QVBoxLayout(permissions);
    auto* statusRow = new QHBoxLayout;
    auto* statusIcon = new QLabel(permissions);
    auto* statusText = new QLabel(permissions);
    statusRow->addWidget(statusIcon);
    statusRow->addWidget(statusText, 1);
    permissionColumn->addLayout(statusRow);
    auto* row = new AccessibilityRow(model.permissions(), permissions);
    permissionColumn->addWidget(row);
    column->addWidget(permissions);
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        auto* noTray = new QLabel(tr("Your desktop shows no tray icons, so Orlo runs without an icon. To open these "
                                     "settings again, start Orlo again from your applications menu."),
                                  this);
        noTray->setObjectName(QStringLiteral("noTray"));
        noTray->setWordWrap(true);
        column->addWidget(noTray);
    }
    if (!model.sessionNote().isEmpty()) {
        auto* session = new QLabel(model.sessionNote(), this);
        session->setObjectName(QStringLiteral("sessionNote"));
        session->setWordWrap(true);
        column->addWidget(session);
    }
    column->addStretch(1);

    auto refreshLogin = [&model, login] { login->show(model.launchAtLogin()); };
    auto refreshPermission = [&model, statusIcon, statusText, row] {
        const bool allowed = model.permissions().accessibility();
        statusText->setText(allowed ? tr("Accessibility allowed") : tr("Accessibility not allowed"));
        statusIcon->setPixmap(allowed ? symbolPixmap(QStringLiteral("checkmark.circle.fill"), 16, QColor(0x2E, 0xA0, 0x43))
                                      : symbolPixmap(QStringLiteral("xmark.circle.fill"), 16, QColor(0xD0, 0x3A, 0x2F)));
        row->setVisible(!allowed);
    };
    refreshLogin();
    refreshPermission();
    connect(login, &ToggleSwitch::toggled, this, [&model](bool on) { model.setLaunchAtLogin(on); });
    connect(&model, &AppModel::revisionChanged, this, refreshLogin);
    connect(&model.permissions(), &Permissions::accessibilityChanged, this, refreshPermission);
}

}  // namespace orlo
