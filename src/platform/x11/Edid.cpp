#include "platform/x11/Edid.h"

namespace orlo::x11 {

static constexpr unsigned char Header[8] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
static constexpr int BlockSize = 128;
static constexpr int FirstDescriptor = 54;
static constexpr int DescriptorSize = 18;
static constexpr unsigned char MonitorNameTag = 0xFC;

std::optional<Edid> Edid::parse(const QByteArray& data)
{
    if (data.size() < BlockSize || memcmp(data.constData(), Header, sizeof Header) != 0) return std::nullopt;
    const auto byte = [&](int i) { return quint32(quint8(data[i])); };
    Edid edid;
    edid.vendor = quint16(byte(8) << 8 | byte(9));
    edid.product = quint16(byte(10) | byte(11) << 8);
    edid.serial = byte(12) | byte(13) << 8 | byte(14) << 16 | byte(15) << 24;
    for (int d = FirstDescriptor; d + DescriptorSize <= BlockSize; d += DescriptorSize) {
        if (byte(d) || byte(d + 1) || byte(d + 3) != MonitorNameTag) continue;
        QByteArray text = data.mid(d + 5, 13);
        if (const qsizetype end = text.indexOf('\n'); end >= 0) text.truncate(end);
        edid.monitorName = QString::fromLatin1(text).trimmed();
    }
    return edid;
}

QString Edid::key() const { return QStringLiteral("%1-%2-%3").arg(vendor).arg(product).arg(serial); }

}  // namespace orlo::x11
