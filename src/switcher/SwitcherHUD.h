#pragma once
#include "platform/Screens.h"
#include "switcher/SwitchItem.h"
#include "switcher/SwitcherSettings.h"
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <functional>
#include <memory>

namespace orlo {

class MouseMonitor;
class Overlay;
class SwitcherSession;
class SwitcherView;
class WindowServer;

// The floating display of an open switcher, centred on the screen under the pointer. Where the
// module's tap sees every key it never takes the keyboard; where the tap sees only Orlo's own
// windows' keys it takes the focus, and losing it cancels. It reports a click on an item as a
// pick and a click anywhere else as a cancel.
class SwitcherHUD : public QObject {
    Q_OBJECT
public:
    SwitcherHUD(Screens& screens, MouseMonitor& mouse, WindowServer& windows, Overlay& overlay, bool takesFocus,
                QObject* parent = nullptr);
    ~SwitcherHUD() override;

    // Makes the panel and draws it once unseen, so that the first opening is as quick as any.
    void prepare();
    void show(SwitcherSession& session, std::function<void(const SwitchItem&)> onPick, std::function<void()> onCancel);
    void hide();
    bool isVisible() const;
    // Sizes and places the panel again for the session's current items.
    void fit();
    SwitcherView* view() const { return view_.get(); }
    // Where the panel stands in window-system coordinates; empty while it was never shown.
    QRect geometry() const;

    // The panel's size for a number of items: at most 10 rows, or 3 rows of 6 tiles, show at once.
    static QSize size(int count, SwitcherSettings::Layout layout);
    // The panel's top-left corner in window-system coordinates: centred on the visible frame of
    // the screen under the pointer (screen coordinates), else of the first screen.
    // primaryOrigin: where the primary screen's top-left corner stands in the window system.
    static QPoint placement(const QPointF& pointer, const QList<ScreenInfo>& screens, QSize size);

signals:
    // The display has the keyboard focus (only where it takes the focus).
    void focused();

private:
    void readScreens();

    Screens& screens_;
    // Read ahead of an opening (at start, after each closing and on every change): asking the
    // window system costs more than the rest of an opening.
    QList<ScreenInfo> knownScreens_;
    MouseMonitor& mouse_;
    WindowServer& windows_;
    Overlay& overlay_;
    bool takesFocus_;
    std::unique_ptr<SwitcherView> view_;
    SwitcherSession* session_ = nullptr;
};

}  // namespace orlo
