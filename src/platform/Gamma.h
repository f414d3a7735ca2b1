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

// Displays' colour transfer (gamma) tables. Changes made through set() are undone by
// restoreAll(), also after the program that made them ended without undoing them.
class Gamma : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Connected displays, the main display first.
    virtual QList<GammaDisplay> displays() = 0;
    // Entries per table; 0 when the display's tables cannot be changed.
    virtual int capacity(quint32 display) = 0;
    virtual std::optional<GammaTables> read(quint32 display) = 0;
    virtual bool set(quint32 display, const GammaTables& tables) = 0;
    // Every display back to the tables it had before the first set().
    virtual void restoreAll() = 0;
signals:
    // Displays were connected, removed, rearranged or woke up.
    void displaysChanged();
};

}  // namespace orlo
