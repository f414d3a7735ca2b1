#include "platform/wayland/kwin/KWinReport.h"
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <cmath>
#include <limits>

namespace orlo::kwin {

namespace {
// Coordinates beyond this are not a screen's; the limit keeps the arithmetic on them finite.
constexpr double largestCoordinate = 1 << 24;

std::optional<QRectF> rectangle(const QJsonValue& value)
{
    const QJsonArray a = value.toArray();
    if (a.size() != 4) return std::nullopt;
    double v[4];
    for (int i = 0; i < 4; ++i) {
        if (!a[i].isDouble() || !std::isfinite(a[i].toDouble()) || std::abs(a[i].toDouble()) > largestCoordinate)
            return std::nullopt;
        v[i] = a[i].toDouble();
    }
    if (v[2] <= 0 || v[3] <= 0) return std::nullopt;
    return QRectF(v[0], v[1], v[2], v[3]);
}

qint64 processId(const QJsonValue& value)
{
    const double pid = value.toDouble(0);
    return pid >= 1 && pid <= std::numeric_limits<qint32>::max() ? qint64(pid) : 0;
}

int screenIndex(const QJsonValue& value)
{
    const double index = value.toDouble(-1);
    return index >= 0 && index < 1024 ? int(index) : -1;
}

std::optional<KWinWindow> window(const QJsonObject& o)
{
    KWinWindow w;
    w.id = o.value(QLatin1String("id")).toString();
    const auto frame = rectangle(o.value(QLatin1String("frame")));
    if (w.id.isEmpty() || !frame) return std::nullopt;
    w.frame = *frame;
    w.title = o.value(QLatin1String("title")).toString();
    w.resourceClass = o.value(QLatin1String("resourceClass")).toString();
    w.desktopFile = o.value(QLatin1String("desktopFile")).toString();
    w.pid = processId(o.value(QLatin1String("pid")));
    w.minimized = o.value(QLatin1String("minimized")).toBool();
    w.fullScreen = o.value(QLatin1String("fullScreen")).toBool();
    w.normal = o.value(QLatin1String("normal")).toBool();
    w.dialog = o.value(QLatin1String("dialog")).toBool();
    w.skipTaskbar = o.value(QLatin1String("skipTaskbar")).toBool();
    w.onCurrentDesktop = o.value(QLatin1String("onCurrentDesktop")).toBool(true);
    w.screen = screenIndex(o.value(QLatin1String("screen")));
    return w;
}

std::optional<KWinScreen> screen(const QJsonObject& o)
{
    const auto frame = rectangle(o.value(QLatin1String("frame")));
    if (!frame) return std::nullopt;
    // A work area outside its screen is no work area: the whole screen serves.
    const auto work = rectangle(o.value(QLatin1String("workArea")));
    return KWinScreen{o.value(QLatin1String("name")).toString(), *frame,
                      work && frame->contains(*work) ? *work : *frame};
}
}  // namespace

std::optional<KWinReport> parseKWinReport(QByteArrayView json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json.toByteArray());
    if (!document.isObject()) return std::nullopt;
    const QJsonObject root = document.object();
    KWinReport report;
    report.active = root.value(QLatin1String("active")).toString();
    QSet<QString> seen;
    for (const QJsonValue& id : root.value(QLatin1String("recent")).toArray())
        if (id.isString() && !seen.contains(id.toString())) {
            seen.insert(id.toString());
            report.recent << id.toString();
        }
    seen.clear();
    for (const QJsonValue& value : root.value(QLatin1String("windows")).toArray())
        if (auto w = window(value.toObject()); w && !seen.contains(w->id)) {
            seen.insert(w->id);
            report.windows << *w;
        }
    for (const QJsonValue& value : root.value(QLatin1String("screens")).toArray())
        if (auto s = screen(value.toObject())) report.screens << *s;
    return report;
}

}  // namespace orlo::kwin
