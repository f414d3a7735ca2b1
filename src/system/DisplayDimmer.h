#pragma once
#include "platform/Gamma.h"
#include <QHash>
#include <QList>
#include <QMetaObject>
#include <QObject>
#include <optional>

namespace orlo {

class Defaults;

// Dims each display below its lowest brightness by scaling its gamma tables. Levels are
// kept per display and applied while the dimmer is active; stopping gives every display
// its own tables back.
class DisplayDimmer : public QObject {
    Q_OBJECT
public:
    static constexpr double MinimumLevel = 0.15;
    static constexpr double MaximumLevel = 1.0;
    static inline const QString LevelsKey = QStringLiteral("system.dimLevels");

    DisplayDimmer(Gamma& gamma, Defaults& defaults, QObject* parent = nullptr);

    const QList<GammaDisplay>& displays() const { return displays_; }
    std::optional<GammaDisplay> main() const;
    double level(const GammaDisplay& display) const { return levels_.value(display.key, MaximumLevel); }
    bool isActive() const { return active_; }
    bool holdsSavedTables() const { return !originals_.isEmpty(); }

    void start();
    void stop();
    void setLevel(double level, const GammaDisplay& display);
    void resetAll();
    // Orlo is ending: give every display its tables back and forget them.
    void restoreForExit();
    void refreshDisplays();

signals:
    void displaysChanged();
    void levelsChanged();

private:
    void reapply();
    void apply(const GammaDisplay& display);
    void saveLevels();

    Gamma& gamma_;
    Defaults& defaults_;
    QList<GammaDisplay> displays_;
    QHash<QString, double> levels_;
    bool active_ = false;
    QHash<quint32, GammaTables> originals_;
    QMetaObject::Connection observer_;
};

}  // namespace orlo
