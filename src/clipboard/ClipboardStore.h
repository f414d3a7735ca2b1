#pragma once
#include "clipboard/ClipCapture.h"
#include "clipboard/ClipFolder.h"
#include "clipboard/ClipHistoryFile.h"
#include "clipboard/ClipItem.h"
#include <QFuture>
#include <QFutureWatcher>
#include <QHash>
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace orlo {

class ClipboardSettings;
class Pasteboard;
class Workspace;

// The clipboard history: watches the pasteboard, records each new copy once (newest
// first), keeps images as PNG files beside the history, trims to the configured size while
// keeping pinned items, saves one second after the last change, and puts chosen items back.
//
// Nothing that grows with the history runs on the GUI thread when a copy is recorded: the
// same content is found through an index of signatures, the history is read and written by
// a worker thread, and long texts and images are digested and converted by another.
class ClipboardStore : public QObject {
    Q_OBJECT
public:
    static constexpr int PollIntervalMs = 400;
    static constexpr int SaveDelayMs = 1000;
    // Contents marked with any of these types (passwords, transient and generated data) are never recorded.
    static const QStringList skipTypes;
    // Password managers on Linux mark secrets with this type holding "secret".
    static const QString passwordHintType;

    ClipboardStore(ClipboardSettings& settings, Pasteboard& pasteboard, Workspace& workspace,
                   QString folder = defaultFolder(), QObject* parent = nullptr);
    ~ClipboardStore() override;
    // "Orlo/Clipboard" in the user's data folder.
    static QString defaultFolder();

    const QList<ClipItem>& items() const { return items_; }
    // Where the pinned items are in items(), newest first; found without looking through the history.
    std::vector<qsizetype> pinnedPositions() const;
    // Where the item is in items(), or -1.
    qsizetype positionOf(const ClipItem& item) const;
    QString folder() const { return folder_.path(); }
    QString imagesFolder() const { return folder_.imagesPath(); }
    bool isLoaded() const { return loaded_; }
    bool isLoading() const { return loader_.isRunning(); }
    bool isPolling() const { return timer_.isActive(); }
    bool hasPendingSave() const { return saveTimer_.isActive(); }
    bool isCapturing() const { return !captures_.empty(); }

    // Starts reading the history on the worker thread the first time, then polls the
    // pasteboard; copies made while the history is read are merged into it.
    void start();
    // Stops polling and saves at once when a save is pending; returns once it is on disk.
    void stop();
    // Reads the history now, or waits for the reading that start() began. The folder is
    // tidied afterwards on the worker thread.
    void load();
    // Waits until the worker threads have nothing left to read, write or tidy.
    void waitUntilIdle();
    void poll();
    void trim();
    // Waits for the copies still being digested or converted and records them.
    void finishCaptures();
    // Writes the history now and waits for it (quitting); saveSoon's writes go to a worker
    // thread so that a long history never holds up keys and pickers.
    void saveNow();
    void saveInBackground();

    void copyToPasteboard(const ClipItem& item, bool plainText);
    void togglePin(const ClipItem& item);
    void deleteItem(const ClipItem& item);
    // Removes every unpinned item, and the unreadable histories kept aside, which hold the
    // same private data.
    void clearHistory();

    // Records a capture, folding it into an earlier item with the same content. An image
    // capture brings its PNG bytes, or the name of the file already written for it.
    void insert(ClipItem item, const QByteArray& png);

signals:
    void itemsChanged();

private:
    // Every item has a stamp, larger the later it was put on top, so that the stamps of the
    // history, newest first, descend: an item's position is found by a binary search.
    using Stamp = quint64;
    // Each content's item, found by its signature's key (the item found is checked against
    // the signature), and the pinned items.
    struct Index {
        QHash<quint64, Stamp> bySignature;
        std::set<Stamp, std::greater<>> pinned;
    };
    struct Loaded {
        ClipHistoryFile::Status status = ClipHistoryFile::Status::Missing;
        QList<ClipItem> items;
        QList<Stamp> stamps;
        Index index;
        QStringList imageNames;
    };
    // The worker's part of loading.
    static Loaded readFromDisk(const ClipHistoryFile& file, const ClipHistoryFile::Waiting& waiting);
    // Makes the folder private and, after a history that was read, removes the images it does
    // not name that were there before it was read.
    static void tidyFolder(const ClipFolder& folder, const QStringList& imageNames, bool historyRead, const QDateTime& startedAt);
    void startLoading();
    void finishLoading();
    void enqueue(ClipCapture::Pending pending, std::optional<QString> bundleID, std::optional<QString> appName);
    void recordFinishedCaptures();

    // Removes the unpinned items beyond the limit; whether any went.
    bool trimItems();
    void scheduleSave();
    // Creates the folder and moves an unreadable file aside; an error text when that failed.
    QString prepareToWrite();
    static void writeFile(const ClipHistoryFile& file, const QList<ClipItem>& items);
    // Removes the image of an item that left the history.
    void forget(const ClipItem& item);
    static Index indexOf(const QList<ClipItem>& items, const QList<quint64>& signatureKeys, const QList<Stamp>& stamps);
    qsizetype positionOf(Stamp stamp) const;
    Stamp stampOf(const ClipItem& item) const;
    // Puts the item at this position on top with a new stamp.
    void raise(qsizetype at);
    void prepend(ClipItem item);
    ClipItem takeAt(qsizetype at);
    qsizetype unpinnedCount() const { return items_.size() - qsizetype(index_.pinned.size()); }

    ClipboardSettings& settings_;
    Pasteboard& pasteboard_;
    Workspace& workspace_;
    ClipFolder folder_;
    ClipHistoryFile file_;
    QList<ClipItem> items_;
    QList<Stamp> stamps_;  // beside items_
    Stamp lastStamp_ = 0;
    Index index_;
    QTimer timer_;
    QTimer saveTimer_;
    QThreadPool writer_;  // one thread: the history is read, then written in the order of the saves
    QThreadPool workers_;  // long texts and images
    QFutureWatcher<Loaded> loader_;
    // Read by one thread while nobody waits, leaving the other cores to start-up.
    const std::shared_ptr<std::atomic<bool>> waitedFor_ = std::make_shared<std::atomic<bool>>(false);
    // Captures in the order they were copied; each is recorded once it and those before it are done.
    std::deque<std::unique_ptr<QFutureWatcher<std::optional<ClipCapture::Result>>>> captures_;
    qint64 lastChangeCount_;
    bool loadStarted_ = false;
    QDateTime loadStartedAt_;
    bool loaded_ = false;
    // The file on disk could not be read: move it aside before the first save replaces it.
    bool fileUnreadable_ = false;
};

}  // namespace orlo
