#pragma once
#include <QObject>
#include <QTimer>
#include <QVariantMap>
#include <optional>

namespace orlo {

class SettingsStorage;

// The per-user defaults store: typed values under dotted keys. A typed read returns
// nothing when the key is absent or holds a value of another type, so each caller applies
// its own fallback. Writes are saved shortly after, coalesced, and on flush().
class Defaults : public QObject {
    Q_OBJECT
public:
    explicit Defaults(SettingsStorage& storage, QObject* parent = nullptr);
    ~Defaults() override;

    QVariant object(const QString& key) const;
    std::optional<bool> boolValue(const QString& key) const;
    // Integers, or doubles truncated; nothing for a double beyond the 64-bit integers.
    std::optional<qint64> integerValue(const QString& key) const;
    std::optional<double> doubleValue(const QString& key) const;    // any number
    std::optional<QString> stringValue(const QString& key) const;
    std::optional<QByteArray> dataValue(const QString& key) const;
    std::optional<QStringList> stringListValue(const QString& key) const;
    std::optional<QVariantMap> dictionaryValue(const QString& key) const;

    void set(const QString& key, const QVariant& value);
    void remove(const QString& key);
    void flush();

    // Why the stored settings could not be read at start, if they could not.
    QString loadProblem() const { return loadProblem_; }

signals:
    void changed(const QString& key);

private:
    SettingsStorage& storage_;
    QVariantMap values_;
    QString loadProblem_;
    QTimer saveTimer_;
    bool dirty_ = false;
};

}  // namespace orlo
