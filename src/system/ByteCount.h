#pragma once
#include <QLocale>
#include <QString>

namespace orlo {

// A size as people read it: "3.2 GB".
inline QString byteCount(quint64 bytes) { return QLocale().formattedDataSize(qint64(bytes), 1, QLocale::DataSizeSIFormat); }

}  // namespace orlo
