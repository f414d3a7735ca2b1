#pragma once
#include "platform/Gamma.h"
#include <QSet>
#include <memory>

namespace orlo::mac {

// Displays' transfer tables through Quartz Display Services. A mark tells the next start that
// a display was left changed: it then restores every display's ColorSync profile.
class MacGamma : public Gamma {
    Q_OBJECT
public:
    explicit MacGamma(QObject* parent = nullptr);
    ~MacGamma() override;

    QList<GammaDisplay> displays() override;
    int capacity(quint32 display) override;
    std::optional<GammaTables> read(quint32 display) override;
    bool set(const GammaDisplay& display, const GammaTables& tables, const GammaTables& original) override;
    void forget(const GammaDisplay& display) override;

private:
    void markChanged(const QString& key, bool changed);

    struct Observers;
    std::unique_ptr<Observers> observers_;
    QSet<QString> changed_;  // keys of the displays that show Orlo's tables
};

}  // namespace orlo::mac
