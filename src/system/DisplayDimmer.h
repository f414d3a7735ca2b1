#pragma once
#include "platform/Gamma.h"
#include <QHash>
#include <QList>
#include <QObject>
#include <optional>

namespace orlo {

class Defaults;

// Dims each display below its lowest brightness by scaling its gamma tables. Levels are
// kept per display and applied while the dimmer is active; stopping gives every display
// its own tables back. Another program may change the tables too (a night light, a colour
// calibration): tables Orlo did not write become the display's own, dimming goes on top of
// them, and a display whose tables are no longer Orlo's is never written back.
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
    bool holdsSavedTables() const { return !dimmed_.isEmpty(); }

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
    // A display Orlo dims: its own tables and the ones Orlo wrote, as the display keeps them.
    struct Dimmed {
        GammaTables original;
        GammaTables written;
    };

    void onDisplaysChanged();
    void reapply();
    void apply(const GammaDisplay& display);
    void restore(const GammaDisplay& display);
    void restoreAll();
    std::optional<GammaTables> currentTables(const GammaDisplay& display);
    void saveLevels();

    Gamma& gamma_;
    Defaults& defaults_;
    QList<GammaDisplay> displays_;
    QHash<QString, double> levels_;
    bool active_ = false;
    QHash<QString, Dimmed> dimmed_;  // by display key: a CRTC may show another display later
};

}  // namespace orlo
