#pragma once
#include "clipboard/ClipItem.h"
#include <QHash>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringList>
#include <atomic>
#include <memory>
#include <optional>

namespace orlo {

// "history.json": the whole history as one JSON array, newest first, each item's keys in
// field order, absent fields left out, rich data in Base64 and dates in seconds since
// 1 January 2001 (UTC).
class ClipHistoryFile {
public:
    enum class Status { Missing, Loaded, Unreadable };
    // The items, and what the store would otherwise look through all of them for, gathered
    // while each item was at hand.
    struct Decoded {
        QList<ClipItem> items;
        // For each signature key, the newest item with it, counted from the end: the last
        // item is 1.
        QHash<quint64, quint64> newestBySignature;
        QList<qsizetype> pinned;  // the positions of the pinned items
        QStringList imageNames;   // the image files the items name
    };
    // The items of a stretch of the file, and beside them what Decoded is made from.
    struct Part {
        QList<ClipItem> items;
        QList<quint64> signatureKeys;  // each item's
        QList<qsizetype> pinned;
        QStringList imageNames;
    };
    struct Contents {
        Status status = Status::Missing;
        Decoded history;
    };

    explicit ClipHistoryFile(QString path) : path_(std::move(path)) {}
    QString path() const { return path_; }

    // Set when someone waits for a read under way: it is then shared with helper threads.
    // Without it, or once it is set, helpers read from the start.
    using Waiting = std::shared_ptr<const std::atomic<bool>>;

    Contents read(const Waiting& waiting = {}) const;
    // Replaces the file atomically; the file is the user's alone. False with a reason on failure.
    bool write(const QList<ClipItem>& items, QString* error) const;
    // Renames the file beside itself ("history.json.unreadable-<time>") so that it is not
    // lost to the next write; the new path, or empty when it could not be moved.
    QString setAside() const;

    // Histories longer than this are encoded in parts, one a thread.
    static constexpr qsizetype ItemsPerPart = 20'000;
    static void encode(const QList<ClipItem>& items, QIODevice& device);
    static QByteArray encode(const QList<ClipItem>& items);
    // Nothing when the JSON is not an array of complete, well-formed items. Files longer than
    // bytesPerPart are read in parts, shared among threads.
    static constexpr qsizetype BytesPerPart = 1'000'000;
    static constexpr qsizetype MaxParts = 64;
    static std::optional<Decoded> decode(const QByteArray& json, qsizetype bytesPerPart = BytesPerPart, const Waiting& waiting = {});
    // The file cut where its items meet into about one part per bytesPerPart, no more than
    // MaxParts; one part when it has no such places.
    static QList<QByteArrayView> splitIntoParts(QByteArrayView json, qsizetype bytesPerPart);

    // Seconds between the Unix epoch and 1 January 2001, the dates' reference.
    static constexpr qint64 ReferenceDateOffset = 978307200;

private:
    QString path_;
};

}  // namespace orlo
