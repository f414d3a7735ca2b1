#include "platform/wayland/kwin/KWinDesktop.h"
#include <QJsonArray>
#include <QSet>

namespace orlo::kwin {

KWinDesktop::KWinDesktop(Send send, QObject* parent) : QObject(parent), send_(std::move(send)) {}

void KWinDesktop::apply(KWinReport report)
{
    const QString previousActive = reported_ ? report_.active : QString();
    report_ = std::move(report);
    reported_ = true;
    origin_ = report_.screens.isEmpty() ? QPointF() : report_.screens.first().frame.topLeft();

    QHash<QString, WindowId> numbers;
    index_.clear();
    for (qsizetype i = 0; i < report_.windows.size(); ++i) {
        const QString& id = report_.windows[i].id;
        const WindowId number = numbers_.value(id, 0) ? numbers_.value(id) : nextNumber_++;
        numbers.insert(id, number);
        index_.insert(number, i);
    }
    // Numbers of closed windows are not given again, so an old number never finds a new window.
    numbers_ = std::move(numbers);

    emit changed();
    if (report_.active != previousActive) emit activeChanged();
}

QList<const KWinWindow*> KWinDesktop::topFirst() const
{
    QList<const KWinWindow*> list;
    for (auto it = report_.windows.crbegin(); it != report_.windows.crend(); ++it) list << &*it;
    return list;
}

QList<const KWinWindow*> KWinDesktop::byRecency() const
{
    QList<const KWinWindow*> list;
    QSet<const KWinWindow*> listed;
    for (const QString& id : report_.recent)
        if (const KWinWindow* w = window(numbers_.value(id))) {
            list << w;
            listed.insert(w);
        }
    for (const KWinWindow* w : topFirst())
        if (!listed.contains(w)) list << w;
    return list;
}

const KWinWindow* KWinDesktop::window(WindowId id) const
{
    const auto it = index_.constFind(id);
    return it == index_.constEnd() ? nullptr : &report_.windows[*it];
}

KWinWindow* KWinDesktop::find(WindowId id)
{
    const auto it = index_.constFind(id);
    return it == index_.constEnd() ? nullptr : &report_.windows[*it];
}

const KWinWindow* KWinDesktop::activeWindow() const
{
    return report_.active.isEmpty() ? nullptr : window(numbers_.value(report_.active));
}

QList<KWinScreen> KWinDesktop::screens() const
{
    QList<KWinScreen> list = report_.screens;
    for (KWinScreen& s : list) {
        s.frame.translate(-origin_);
        s.workArea.translate(-origin_);
    }
    return list;
}

void KWinDesktop::activate(WindowId id, bool unminimize)
{
    const KWinWindow* w = window(id);
    if (!w) return;
    send_(QJsonObject{{QStringLiteral("op"), QStringLiteral("activate")}, {QStringLiteral("id"), w->id},
                      {QStringLiteral("unminimize"), unminimize}});
}

void KWinDesktop::setFrame(WindowId id, const QRectF& frame)
{
    KWinWindow* w = find(id);
    if (!w || frame.isEmpty()) return;
    const QRectF inKWin = frame.translated(origin_);
    const QJsonArray rect{qRound(inKWin.x()), qRound(inKWin.y()), qRound(inKWin.width()), qRound(inKWin.height())};
    send_(QJsonObject{{QStringLiteral("op"), QStringLiteral("frame")}, {QStringLiteral("id"), w->id},
                      {QStringLiteral("frame"), rect}});
    w->frame = inKWin;
}

void KWinDesktop::closeWindows(qint64 pid)
{
    send_(QJsonObject{{QStringLiteral("op"), QStringLiteral("close")}, {QStringLiteral("pid"), pid}});
}

}  // namespace orlo::kwin
