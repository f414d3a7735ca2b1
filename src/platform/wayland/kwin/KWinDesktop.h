#pragma once
#include "platform/WindowServer.h"
#include "platform/wayland/kwin/KWinReport.h"
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <functional>

namespace orlo::kwin {

// The windows and screens as Orlo's script inside KWin last reported them, and the requests
// that go back to it. Windows get Orlo's own numbers (KWin names them by text ids), which
// stay the same while a window lives. Positions here are Orlo's top-left coordinates: KWin's,
// moved so that the first screen's top-left corner is the origin.
class KWinDesktop : public QObject {
    Q_OBJECT
public:
    using Send = std::function<void(const QJsonObject& request)>;
    explicit KWinDesktop(Send send, QObject* parent = nullptr);

    void apply(KWinReport report);
    bool hasReport() const { return reported_; }

    // Every window, most recently active first; those not active since the script came
    // follow from the top of the stack down.
    QList<const KWinWindow*> byRecency() const;
    // Every window, the top of the stack first.
    QList<const KWinWindow*> topFirst() const;
    const KWinWindow* window(WindowId id) const;
    const KWinWindow* activeWindow() const;
    WindowId idOf(const KWinWindow& window) const { return numbers_.value(window.id); }
    // The windows' frames and the screens in Orlo's coordinates.
    QRectF frameOf(const KWinWindow& window) const { return window.frame.translated(-origin_); }
    QList<KWinScreen> screens() const;

    void activate(WindowId id, bool unminimize);
    // Until KWin reports the move, the window counts as being where it was sent.
    void setFrame(WindowId id, const QRectF& frame);
    void closeWindows(qint64 pid);

signals:
    // A report arrived; activeChanged follows it when another window became active.
    void changed();
    void activeChanged();

private:
    KWinWindow* find(WindowId id);

    Send send_;
    bool reported_ = false;
    KWinReport report_;
    QPointF origin_;
    QHash<QString, WindowId> numbers_;
    QHash<WindowId, qsizetype> index_;  // Orlo's number -> place in report_.windows
    WindowId nextNumber_ = 1;
};

}  // namespace orlo::kwin
