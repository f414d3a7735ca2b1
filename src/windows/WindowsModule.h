#pragma once
#include "app/OrloContext.h"
#include "app/OrloModule.h"

namespace orlo {

class WindowsModule : public OrloModule {
    Q_OBJECT
public:
    explicit WindowsModule(OrloContext& context, QObject* parent = nullptr);

    QString id() const override { return QStringLiteral("windows"); }
    QString title() const override { return tr("Window Manager"); }
    QString symbol() const override { return QStringLiteral("rectangle.split.2x2"); }
    QString summary() const override { return tr("Snap windows into zones with the mouse or the keyboard."); }
    bool needsAccessibility() const override { return true; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;

private:
    OrloContext& context_;
};

}  // namespace orlo
