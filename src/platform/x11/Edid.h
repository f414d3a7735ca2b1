#pragma once
#include <QByteArray>
#include <QString>
#include <optional>

namespace orlo::x11 {

// What a display says about itself in its EDID block.
struct Edid {
    quint16 vendor = 0;   // the manufacturer's three letters, packed
    quint16 product = 0;
    quint32 serial = 0;
    QString monitorName;  // empty when the display gives none

    static std::optional<Edid> parse(const QByteArray& data);
    // "vendor-product-serial" in decimal: the same display gives the same key on every port.
    QString key() const;
};

}  // namespace orlo::x11
