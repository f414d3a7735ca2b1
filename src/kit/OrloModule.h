#pragma once
#include <QObject>
#include <QString>

class QWidget;

namespace orlo {

class Defaults;

// The contract every module fulfils. The model starts and stops modules; the module's
// wish to run lives in the defaults under "<id>.enabled".
class OrloModule : public QObject {
    Q_OBJECT
public:
    explicit OrloModule(Defaults& defaults, QObject* parent = nullptr);

    virtual QString id() const = 0;
    virtual QString title() const = 0;
    virtual QString symbol() const = 0;
    virtual QString summary() const = 0;
    virtual bool needsAccessibility() const = 0;
    virtual void start() = 0;
    virtual void stop() = 0;
    // The module's page in the settings window; the caller takes ownership.
    virtual QWidget* settingsView() = 0;
    // The module's own rows in the panel, below the module switches, or nullptr when it has
    // none; the caller takes ownership.
    virtual QWidget* panelRows() { return nullptr; }

    // True unless "<id>.enabled" holds the Boolean false.
    bool isEnabled() const;
    void setEnabled(bool enabled);

protected:
    Defaults& defaults_;
};

}  // namespace orlo
