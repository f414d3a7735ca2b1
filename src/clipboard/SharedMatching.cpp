#include "clipboard/SharedMatching.h"
#include "kit/ThreadHandOff.h"
#include <QThread>
#include <QThreadPool>
#include <atomic>
#include <memory>

namespace orlo {

namespace {

// Items are taken a few dozen at a time: few enough that waiting for a helper's last ones is
// short, enough that taking them costs little.
constexpr size_t Step = 64;

struct Batch {
    const QList<ClipItem>& items;
    const std::vector<int>& positions;  // read only while some are left to take
    const size_t size;
    const SharedMatching::Test& test;
    std::vector<char> matched;
    std::atomic<size_t> next = 0;
    std::atomic<size_t> done = 0;

    Batch(const QList<ClipItem>& items, const std::vector<int>& positions, const SharedMatching::Test& test)
        : items(items), positions(positions), size(positions.size()), test(test), matched(size)
    {
    }

    void work()
    {
        for (size_t from = next.fetch_add(Step); from < size; from = next.fetch_add(Step)) {
            const size_t to = std::min(from + Step, size);
            for (size_t i = from; i < to; ++i) {
                if (i + SharedMatching::Ahead < size) SharedMatching::prefetchText(items[positions[i + SharedMatching::Ahead]]);
                matched[i] = test(items[positions[i]]) ? 1 : 0;
            }
            if (done.fetch_add(to - from) + (to - from) == size) done.notify_all();
        }
    }
};

}  // namespace

void SharedMatching::prefetchText(const ClipItem& item)
{
    if (item.text) __builtin_prefetch(item.text->constData());
}

std::vector<char> SharedMatching::matches(const QList<ClipItem>& items, const std::vector<int>& batch, const Test& test)
{
    auto shared = std::make_shared<Batch>(items, batch, test);
    // A helper that starts after the batch is done finds nothing left to take, and touches
    // nothing but the shared counters it keeps alive.
    if (batch.size() > 2 * Step)
        for (int i = 1; i < QThread::idealThreadCount(); ++i)
            threads::start(*QThreadPool::globalInstance(), [shared] { shared->work(); });
    shared->work();
    for (size_t done = shared->done.load(); done < batch.size(); done = shared->done.load()) shared->done.wait(done);
    return std::move(shared->matched);
}

}  // namespace orlo
