#pragma once
// The median and 99th percentile of a benchmark's timings, in milliseconds.
#include <QList>
#include <algorithm>
#include <cmath>

struct LatencyFigures {
    double median = 0, p99 = 0;
};

inline LatencyFigures latencyFigures(QList<double> ms)
{
    if (ms.isEmpty()) return {};
    std::sort(ms.begin(), ms.end());
    const int n = int(ms.size());
    return {n % 2 ? ms[n / 2] : (ms[n / 2 - 1] + ms[n / 2]) / 2, ms[std::max(0, int(std::ceil(0.99 * n)) - 1)]};
}
