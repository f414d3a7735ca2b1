#pragma once
#include <QList>
#include <QObject>
#include <QString>
#include <QVector>
#include <optional>

namespace orlo {

// A display whose colour transfer can be changed.
struct GammaDisplay {
    quint32 id = 0;
    QString name;
    QString key;  // vendor-model-serial, stable across restarts and reconnections
    bool isMain = false;
    bool operator==(const GammaDisplay&) const = default;
};

// The red, green and blue transfer tables of a display, values from 0 to 1.
struct GammaTables {
    QVector<float> red, green, blue;
    bool operator==(const GammaTables&) const = default;
};

// Displays' colour transfer (gamma) tables. What set() writes is also kept where the next
// start finds it, so that a display left changed by a crash or a kill gets its own tables
// back, as long as it still shows what Orlo wrote.
class Gamma : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Connected displays, the main display first.
    virtual QList<GammaDisplay> displays() = 0;
    // Entries per table; 0 when the display's tables cannot be changed.
    virtual int capacity(quint32 display) = 0;
    // What the display shows, or what set() is about to write to it, as the display keeps it.
    virtual std::optional<GammaTables> read(quint32 display) = 0;
    // Writes `tables` to a display whose own tables, without Orlo, are `original`. Returns
    // at once; writing `original` itself ends what is kept for the display.
    virtual bool set(const GammaDisplay& display, const GammaTables& tables, const GammaTables& original) = 0;
    // Orlo leaves the display as it is (another program changed its tables): nothing is kept
    // for it any more.
    virtual void forget(const GammaDisplay& display) = 0;
signals:
    // Displays were connected, removed or rearranged, or came back from sleep, from the screen
    // saver or from another virtual terminal: their tables may have been reset.
    void displaysChanged();
};

}  // namespace orlo
