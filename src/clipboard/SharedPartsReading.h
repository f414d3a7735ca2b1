#pragma once
#include "clipboard/ClipHistoryFile.h"
#include <QByteArrayView>
#include <QFuture>
#include <QList>
#include <atomic>
#include <memory>
#include <optional>

namespace orlo {

// The parts of a history file read by this thread and helpers together. This thread reads
// parts from the first on, each straight into the history; the helpers read parts from the
// last back, each into a list of its own. Once they meet, this thread appends what the
// helpers read while another builds the index of signatures.
class SharedPartsReading {
public:
    SharedPartsReading(const QList<QByteArrayView>& parts, ClipHistoryFile::Waiting waiting = {});
    ~SharedPartsReading();

    // Whether every part read as whole items.
    bool readInto(ClipHistoryFile::Decoded& history);

private:
    struct Slot {
        std::optional<ClipHistoryFile::Part> read;  // nothing when the part did not read
        std::atomic<bool> done = false;
    };

    bool isLast(qsizetype i) const { return i == parts_.size() - 1; }
    // Parts [front, back) are not taken yet; both ends are held in one word.
    bool takeFromFront(qsizetype i);
    std::optional<qsizetype> takeFromBack();
    static quint64 front(quint64 span) { return span & 0xFFFFFFFF; }
    static quint64 back(quint64 span) { return span >> 32; }
    // Leaves the parts not taken yet to nobody; false, for returning.
    bool stop();
    void growThreadHeap() const;
    // Helpers are started once, as soon as someone waits.
    void startHelpersIfWaitedFor();
    void help();
    // Oldest first, so that of two items with the same signature the newer one is kept.
    static QHash<quint64, quint64> newestBySignature(const QList<const QList<quint64>*>& keys, qsizetype count);

    const QList<QByteArrayView>& parts_;
    const ClipHistoryFile::Waiting waiting_;
    std::unique_ptr<Slot[]> slots_;
    std::atomic<quint64> span_;
    QList<QFuture<void>> helpers_;
    bool helpersStarted_ = false;
};

}  // namespace orlo
