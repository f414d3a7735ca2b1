#include "clipboard/SharedPartsReading.h"
#include "clipboard/ClipItemJson.h"
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>
#include <cstdlib>
#include <vector>

namespace orlo {

SharedPartsReading::SharedPartsReading(const QList<QByteArrayView>& parts)
    : parts_(parts), slots_(new Slot[size_t(parts.size())]), span_(quint64(parts.size()) << 32)
{
}

SharedPartsReading::~SharedPartsReading()
{
    stop();
    for (auto& helper : helpers_) helper.waitForFinished();
}

bool SharedPartsReading::readInto(ClipHistoryFile::Decoded& history)
{
    for (int i = 1; i < QThread::idealThreadCount() && i < parts_.size(); ++i) helpers_ << QtConcurrent::run([this] { help(); });
    growThreadHeap();
    qsizetype i = 0;
    for (; takeFromFront(i); ++i) {
        if (!ClipItemJson::readPart(parts_[i], i == 0, isLast(i), history)) return stop();
    }
    for (; i < parts_.size(); ++i) {
        Slot& slot = slots_[size_t(i)];
        slot.done.wait(false);
        if (!slot.read) return false;
        history.items.append(std::move(slot.read->items));
        history.signatureKeys.append(slot.read->signatureKeys);
        history.imageNames.append(slot.read->imageNames);
        slot.read.reset();
    }
    return true;
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
