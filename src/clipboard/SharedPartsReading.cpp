#include "clipboard/SharedPartsReading.h"
#include "clipboard/ClipItemJson.h"
#include "kit/ThreadHandOff.h"
#include <QScopeGuard>
#include <QThread>
#include <QThreadPool>
#include <cstdlib>
#include <vector>

namespace orlo {

SharedPartsReading::SharedPartsReading(const QList<QByteArrayView>& parts, ClipHistoryFile::Waiting waiting)
    : parts_(parts), waiting_(std::move(waiting)), slots_(new Slot[size_t(parts.size())]), span_(quint64(parts.size()) << 32)
{
}

SharedPartsReading::~SharedPartsReading()
{
    stop();
    for (auto& helper : helpers_) threads::waitFor(helper);
    // Letting go of the helpers' lists takes milliseconds: another thread does it.
    threads::start(*QThreadPool::globalInstance(), [read = std::shared_ptr<Slot[]>(std::move(slots_))] {});
}

bool SharedPartsReading::readInto(ClipHistoryFile::Decoded& history)
{
    startHelpersIfWaitedFor();
    growThreadHeap();
    ClipHistoryFile::Part front{std::move(history.items), {}, {}, {}};  // with the room made for them
    front.signatureKeys.reserve(front.items.capacity() / 2);
    qsizetype i = 0;
    for (; takeFromFront(i); ++i) {
        if (!ClipItemJson::readPart(parts_[i], i == 0, isLast(i), front)) return stop();
        startHelpersIfWaitedFor();
    }
    QList<const QList<quint64>*> keys{&front.signatureKeys};
    qsizetype count = front.items.size();
    for (qsizetype later = i; later < parts_.size(); ++later) {
        Slot& slot = slots_[size_t(later)];
        slot.done.wait(false);
        if (!slot.read) return false;
        keys << &slot.read->signatureKeys;
        count += slot.read->items.size();
    }
    // Only the keys are read there, and only the other members are changed here.
    bool indexed = false;
    QFuture<void> indexing = threads::run(*QThreadPool::globalInstance(), [&] {
        try {
            history.newestBySignature = newestBySignature(keys, count);
            indexed = true;
        } catch (const std::bad_alloc&) {
        }
    });
    const auto joined = qScopeGuard([&indexing] { threads::waitFor(indexing); });
    history.pinned = std::move(front.pinned);
    history.imageNames = std::move(front.imageNames);
    for (; i < parts_.size(); ++i) {
        ClipHistoryFile::Part& part = *slots_[size_t(i)].read;
        for (const qsizetype at : std::as_const(part.pinned)) history.pinned << front.items.size() + at;
        history.imageNames << part.imageNames;
        front.items.append(std::move(part.items));
    }
    threads::waitFor(indexing);
    if (!indexed) throw std::bad_alloc();
    history.items = std::move(front.items);
    return true;
}

QHash<quint64, quint64> SharedPartsReading::newestBySignature(const QList<const QList<quint64>*>& keys, qsizetype count)
{
    QHash<quint64, quint64> newest;
    newest.reserve(count);
    quint64 fromEnd = 0;
    for (auto list = keys.crbegin(); list != keys.crend(); ++list)
        for (auto key = (*list)->crbegin(); key != (*list)->crend(); ++key) newest.insert(*key, ++fromEnd);
    return newest;
}

void SharedPartsReading::startHelpersIfWaitedFor()
{
    if (helpersStarted_ || (waiting_ && !waiting_->load())) return;
    helpersStarted_ = true;
    for (int i = 1; i < QThread::idealThreadCount() && i < parts_.size(); ++i) helpers_ << threads::run(*QThreadPool::globalInstance(), [this] { help(); });
}

bool SharedPartsReading::takeFromFront(qsizetype i)
{
    quint64 span = span_.load();
    while (front(span) == quint64(i) && front(span) < back(span))
        if (span_.compare_exchange_weak(span, span + 1)) return true;
    return false;
}

std::optional<qsizetype> SharedPartsReading::takeFromBack()
{
    quint64 span = span_.load();
    // The first part, which opens the array, is always this thread's.
    while (front(span) < back(span) && back(span) > 1)
        if (span_.compare_exchange_weak(span, span - (quint64(1) << 32))) return qsizetype(back(span) - 1);
    return std::nullopt;
}

bool SharedPartsReading::stop()
{
    span_.store(0);
    return false;
}

// The C library grows a thread's heap a page at a time, each step a system call that also
// holds up the other threads' page faults: with two threads reading, that was a seventh of
// the time. Taking and giving back large blocks first grows it in few steps; the memory
// given back is not kept, but the heap keeps its size.
void SharedPartsReading::growThreadHeap() const
{
    constexpr qsizetype Block = 96 * 1024;  // below the size the library maps on its own
    qsizetype bytes = 0;
    for (const QByteArrayView part : parts_) bytes += part.size();
    // What the items need is about twice the text they are read from.
    bytes = 2 * bytes / std::max(1, QThread::idealThreadCount());
    std::vector<void*> blocks;
    blocks.reserve(size_t(bytes / Block));
    for (qsizetype taken = 0; taken + Block <= bytes; taken += Block) blocks.push_back(std::malloc(Block));
    for (void* block : blocks) std::free(block);
}

void SharedPartsReading::help()
{
    growThreadHeap();
    while (const auto i = takeFromBack()) {
        Slot& slot = slots_[size_t(*i)];
        try {
            auto& read = slot.read.emplace();
            read.items.reserve(parts_[*i].size() / 250 + 1);
            read.signatureKeys.reserve(parts_[*i].size() / 250 + 1);
            if (!ClipItemJson::readPart(parts_[*i], false, isLast(*i), read)) slot.read.reset();
        } catch (const std::bad_alloc&) {
            slot.read.reset();
        }
        slot.done.store(true);
        slot.done.notify_one();
    }
}

}  // namespace orlo
