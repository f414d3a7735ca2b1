#pragma once
#include <QFuture>
#include <QPromise>
#include <QRunnable>
#include <QThreadPool>
#include <type_traits>
#include <utility>

#if defined(__SANITIZE_THREAD__)
#define ORLO_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORLO_THREAD_SANITIZER 1
#endif
#endif

#ifdef ORLO_THREAD_SANITIZER
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
extern "C" void __tsan_ignore_thread_begin();
extern "C" void __tsan_ignore_thread_end();
#endif

// Orlo hands data from one thread to another through Qt: its thread pools, futures and
// waits. Qt orders each hand-off with locks of its own, which ThreadSanitizer cannot see in
// a Qt that was not built for it: it would report every hand-off as a race. These marks say
// what Qt guarantees. Whatever a thread wrote before handOff() is seen by a thread after its
// next takeOver(). They cost nothing in other builds.
//
// One mark serves every hand-off. It may hide a race between two tasks that merely hand off
// around the same time; it never reports one that is not there.
namespace orlo::threads {

inline char handOffMark;

inline void handOff()
{
#ifdef ORLO_THREAD_SANITIZER
    __tsan_release(&handOffMark);
#endif
}

inline void takeOver()
{
#ifdef ORLO_THREAD_SANITIZER
    __tsan_acquire(&handOffMark);
#endif
}

// Runs Qt's own code that Orlo's build compiled (its templates), ordered by Qt's own counts
// and locks: not watched, as the rest of Qt is not.
template <class QtCode>
void asQt(QtCode code)
{
#ifdef ORLO_THREAD_SANITIZER
    __tsan_ignore_thread_begin();
#endif
    code();
#ifdef ORLO_THREAD_SANITIZER
    __tsan_ignore_thread_end();
#endif
}

// Runs work on pool, fire and forget. The task is made before the hand-off, so that even
// its making is seen by the pool's thread; its captures are let go of before its own.
template <class Work>
void start(QThreadPool& pool, Work work)
{
    QRunnable* task = QRunnable::create([work = std::move(work)]() mutable {
        takeOver();
        std::move(work)();
        { [[maybe_unused]] Work done = std::move(work); }
        handOff();
    });
    handOff();
    pool.start(task);
}

// Runs work on pool; its result comes through the future. The result is handed off before
// the future finishes, so that whoever sees it finished takes it over.
template <class Work>
auto run(QThreadPool& pool, Work work)
{
    using Result = std::invoke_result_t<Work&>;
    auto promise = std::make_shared<QPromise<Result>>();
    QFuture<Result> future = promise->future();
    promise->start();
    start(pool, [promise, work = std::move(work)]() mutable {
        if constexpr (std::is_void_v<Result>) {
            work();
        } else {
            promise->addResult(work());
        }
        { [[maybe_unused]] Work done = std::move(work); }
        handOff();
        promise->finish();
        // Whichever of the promise and its futures goes last frees the result.
        asQt([&promise] { promise.reset(); });
    });
    return future;
}

// Waits for every task of pool, and takes over what they wrote.
inline void waitForDone(QThreadPool& pool)
{
    pool.waitForDone();
    takeOver();
}

// Waits for future's work, and takes over what it wrote.
template <class T>
void waitFor(QFuture<T> future)
{
    future.waitForFinished();
    takeOver();
}

}  // namespace orlo::threads
