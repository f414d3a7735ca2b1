#pragma once
#include "clipboard/ClipItem.h"
#include <QList>
#include <functional>
#include <vector>

namespace orlo {

// Which of a batch of history items match a search, looked through by this thread together
// with as many helpers from the thread pool as are free. A long history is mostly waiting for
// memory: two threads find every match in about half the time, and the next items' texts are
// asked for ahead of being looked at.
//
// Nothing waits for a helper that has not started: this thread takes whatever is left, and
// waits only for the few items a helper has already taken.
class SharedMatching {
public:
    using Test = std::function<bool(const ClipItem&)>;

    // For each position in `batch`, an index into `items`: whether that item passes the test.
    static std::vector<char> matches(const QList<ClipItem>& items, const std::vector<int>& batch, const Test& test);

    // Asks for the start of the text of an item about to be looked at, so many items ahead.
    static constexpr size_t Ahead = 8;
    static void prefetchText(const ClipItem& item);
};

}  // namespace orlo
