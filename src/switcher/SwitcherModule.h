#pragma once
#include "app/OrloContext.h"
#include "app/OrloModule.h"

namespace orlo {

class SwitcherModule : public OrloModule {
    Q_OBJECT
public:
    explicit SwitcherModule(OrloContext& context, QObject* parent = nullptr);

    QString id() const override { return QStringLiteral("switcher"); }
    QString title() const override { return tr("Window Switcher"); }
    QString symbol() const override { return QStringLiteral("rectangle.stack"); }
    QString summary() const override { return tr("Switch between every window and tab, with search."); }
    bool needsAccessibility() const override { return true; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;

private:
    OrloContext& context_;
};

}  // namespace orlo
