#pragma once
#include "app/OrloContext.h"
#include "app/OrloModule.h"

namespace orlo {

class SystemModule : public OrloModule {
    Q_OBJECT
public:
    explicit SystemModule(OrloContext& context, QObject* parent = nullptr);

    QString id() const override { return QStringLiteral("system"); }
    QString title() const override { return tr("System Monitoring"); }
    QString symbol() const override { return QStringLiteral("gauge.with.dots.needle.33percent"); }
    QString summary() const override { return tr("Usage per app, disk cleanup, display dimming and keyboard cleaning."); }
    bool needsAccessibility() const override { return false; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;

private:
    OrloContext& context_;
};

}  // namespace orlo
