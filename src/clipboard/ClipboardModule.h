#pragma once
#include "app/OrloContext.h"
#include "app/OrloModule.h"

namespace orlo {

class ClipboardModule : public OrloModule {
    Q_OBJECT
public:
    explicit ClipboardModule(OrloContext& context, QObject* parent = nullptr);

    QString id() const override { return QStringLiteral("clipboard"); }
    QString title() const override { return tr("Clipboard History"); }
    QString symbol() const override { return QStringLiteral("doc.on.clipboard"); }
    QString summary() const override { return tr("Everything you copy, searchable, one key to paste."); }
    bool needsAccessibility() const override { return false; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;

private:
    OrloContext& context_;
};

}  // namespace orlo
