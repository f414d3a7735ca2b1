#pragma once
#include "platform/WindowServer.h"
#include <QList>
#include <QPointF>
#include <QRectF>
#include <optional>

namespace orlo {

// Another application's window, as snapping finds and moves it. Frames are in top-left
// coordinates. Two handles are the same window when their ids are equal, however they were
// found. Every call fails quietly.
class SnapWindow {
public:
    SnapWindow(WindowServer& server, WindowId id, qint64 pid) : server_(&server), id_(id), pid_(pid) {}

    WindowId id() const { return id_; }
    qint64 pid() const { return pid_; }

    std::optional<QRectF> frame() const { return server_->frame(id_); }
    void setFrame(const QRectF& frame) const { server_->setFrame(id_, frame); }
    bool isStandard() const { return server_->isStandard(id_); }
    bool isMinimized() const { return server_->isMinimized(id_); }
    bool isFullScreen() const { return server_->isFullScreen(id_); }
    bool isOnCurrentDesktop() const { return server_->isOnCurrentDesktop(id_); }
    QRectF attainableFrame(const QRectF& wanted) const { return server_->attainableFrame(id_, wanted); }

    // The window under a point (top-left coordinates).
    static std::optional<SnapWindow> at(WindowServer& server, const QPointF& point);
    static QList<SnapWindow> windows(WindowServer& server, qint64 pid);
    // The window keyboard actions act on: the focused one, else the application's main
    // window, else its first.
    static std::optional<SnapWindow> focused(WindowServer& server, qint64 pid);

    bool operator==(const SnapWindow& other) const { return id_ == other.id_; }

private:
    WindowServer* server_;
    WindowId id_;
    qint64 pid_;
};

inline size_t qHash(const SnapWindow& window, size_t seed = 0) { return ::qHash(window.id(), seed); }

}  // namespace orlo
