#include "platform/linux/GammaRecoveryFile.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>
#include <cmath>

namespace orlo {

QString GammaRecoveryFile::defaultPath()
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty()) state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/Orlo/dimmed-displays.json");
}

GammaRecoveryFile::GammaRecoveryFile(const QString& path, const QString& display) : path_(path), display_(display) {}

static QJsonValue encode(const QVector<float>& table)
{
    QByteArray bytes;
    bytes.reserve(table.size() * 2);
    for (float v : table) {
        const auto word = quint16(qBound(0.0f, v, 1.0f) * 65535.0f + 0.5f);
        bytes.append(char(word & 0xFF)).append(char(word >> 8));
    }
    return QString::fromLatin1(bytes.toBase64());
}

static QVector<float> decode(const QJsonValue& value)
{
    const QByteArray bytes = QByteArray::fromBase64(value.toString().toLatin1());
    QVector<float> table;
    for (qsizetype i = 0; i + 1 < bytes.size(); i += 2) table << float(quint8(bytes[i]) | quint8(bytes[i + 1]) << 8) / 65535.0f;
    return table;
}

static QJsonObject encode(const GammaTables& t)
{
    return {{QStringLiteral("red"), encode(t.red)}, {QStringLiteral("green"), encode(t.green)}, {QStringLiteral("blue"), encode(t.blue)}};
}

static GammaTables decode(const QJsonObject& o)
{
    return {decode(o.value(QStringLiteral("red"))), decode(o.value(QStringLiteral("green"))), decode(o.value(QStringLiteral("blue")))};
}

// An entry names its display by key; files of older versions name it by id alone.
static bool readDisplayId(const QJsonObject& entry, quint32* id)
{
    const QJsonValue value = entry.value(QStringLiteral("id"));
    if (value.isUndefined()) return true;
    // Display ids are whole numbers from 1 to 2^32 - 1; an entry under any other is no display's.
    const double number = value.toDouble();
    if (!(number >= 1 && number <= 0xFFFFFFFF) || number != std::floor(number)) return false;
    *id = quint32(number);
    return true;
}

QList<GammaRecoveryFile::Change> GammaRecoveryFile::load() const
{
    QList<Change> changes;
    QFile file(path_);
    if (!file.open(QIODevice::ReadOnly)) return changes;
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    if (root.value(QStringLiteral("display")).toString() != display_) return changes;
    for (const QJsonValue& value : root.value(QStringLiteral("displays")).toArray()) {
        const QJsonObject entry = value.toObject();
        Change change;
        change.key = entry.value(QStringLiteral("key")).toString();
        if (!readDisplayId(entry, &change.displayId) || (change.key.isEmpty() && !change.displayId)) continue;
        change.original = decode(entry.value(QStringLiteral("original")).toObject());
        change.applied = decode(entry.value(QStringLiteral("applied")).toObject());
        if (!change.original.red.isEmpty()) changes << change;
    }
    return changes;
}

void GammaRecoveryFile::save(const QList<Change>& changes) const
{
    if (changes.isEmpty()) {
        remove();
        return;
    }
    QJsonArray displays;
    for (const Change& change : changes) {
        QJsonObject entry{{QStringLiteral("key"), change.key},
                          {QStringLiteral("original"), encode(change.original)},
                          {QStringLiteral("applied"), encode(change.applied)}};
        if (change.displayId) entry.insert(QStringLiteral("id"), double(change.displayId));
        displays << entry;
    }
    const QString folder = QFileInfo(path_).absolutePath();
    if (!QDir().mkpath(folder)) return;
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(QJsonDocument(QJsonObject{{QStringLiteral("display"), display_}, {QStringLiteral("displays"), displays}}).toJson(QJsonDocument::Compact));
    file.commit();
}

void GammaRecoveryFile::remove() const { QFile::remove(path_); }

}  // namespace orlo
