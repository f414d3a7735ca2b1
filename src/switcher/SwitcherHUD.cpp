#include "switcher/SwitcherHUD.h"
#include "platform/MouseMonitor.h"
#include "platform/Overlay.h"
#include "platform/WindowServer.h"
#include "switcher/SwitcherSession.h"
#include "switcher/SwitcherView.h"
#include "kit/SnapScreens.h"
#include <QGuiApplication>
#include <QImage>
#include <QScreen>
#include <QTimer>
#include <cmath>

namespace orlo {

SwitcherHUD::SwitcherHUD(Screens& screens, MouseMonitor& mouse, WindowServer& windows, Overlay& overlay, bool takesFocus,
                         QObject* parent)
    : QObject(parent), screens_(screens), mouse_(mouse), windows_(windows), overlay_(overlay), takesFocus_(takesFocus)
{
    connect(&screens_, &Screens::changed, this, &SwitcherHUD::readScreens);
    // The compositor took the display down: the switcher cannot go on without it.
    connect(&overlay_, &Overlay::closed, this, [this] {
        if (view_ && session_) view_->cancel();
    });
}

void SwitcherHUD::readScreens() { knownScreens_ = screens_.screens(); }

SwitcherHUD::~SwitcherHUD() = default;

QSize SwitcherHUD::size(int count, SwitcherSettings::Layout layout)
{
    const int n = std::max(count, 1);
    if (layout == SwitcherSettings::Layout::List) return QSize(620, 98 + 46 * std::min(n, 10));
    const int columns = std::min(n, 6);
    const int rows = std::min((n + 5) / 6, 3);
    return QSize(std::max(460, 132 * columns + 8 * (columns - 1) + 32), 116 * rows + 52 + 8 * (rows - 1) + 24 + 30);
}

QPoint SwitcherHUD::placement(const QPointF& pointer, const QList<ScreenInfo>& screens, QSize size)
{
    if (screens.isEmpty()) {
        const QScreen* primary = QGuiApplication::primaryScreen();
        return primary ? primary->geometry().topLeft() : QPoint();
    }
    const SnapScreens lookup(screens);
    const ScreenInfo screen = lookup.screenAt(pointer).value_or(screens.first());
    const QPointF middle = screen.visibleFrame.center();
    const QRectF panel(middle.x() - size.width() / 2.0, middle.y() - size.height() / 2.0, size.width(), size.height());
    // Placed relative to its screen's corner, which is where Qt has that screen.
    const QPointF topLeft = lookup.flip(panel).topLeft() - lookup.flip(screen.frame).topLeft() + lookup.qtOrigin(screen);
    return QPoint(int(std::lround(topLeft.x())), int(std::lround(topLeft.y())));
}

QRect SwitcherHUD::geometry() const { return overlay_.geometry(); }

bool SwitcherHUD::isVisible() const { return session_ && overlay_.isVisible(); }

void SwitcherHUD::prepare()
{
    if (view_) return;
    readScreens();
    view_ = std::make_unique<SwitcherView>(windows_.canShowTranslucentWindows(), takesFocus_);
    connect(view_.get(), &SwitcherView::focused, this, &SwitcherHUD::focused);
    view_->winId();
    SwitcherSession sample({}, SwitcherSettings::Layout::List);
    view_->setSession(&sample, {}, {});
    view_->resize(size(0, SwitcherSettings::Layout::List));
    QImage image(view_->size(), QImage::Format_ARGB32_Premultiplied);
    view_->render(&image);
    view_->setSession(nullptr, {}, {});
}

void SwitcherHUD::show(SwitcherSession& session, std::function<void(const SwitchItem&)> onPick, std::function<void()> onCancel)
{
    prepare();
    session_ = &session;
    view_->setSession(&session, std::move(onPick), std::move(onCancel));
    fit();
}

void SwitcherHUD::fit()
{
    if (!view_ || !session_) return;
    const QSize size = SwitcherHUD::size(int(session_->filtered().size()), session_->layout());
    if (knownScreens_.isEmpty()) readScreens();
    overlay_.show(*view_, QRect(placement(mouse_.location(), knownScreens_, size), size));
}

void SwitcherHUD::hide()
{
    if (view_ && session_) {
        overlay_.hide();
        view_->setSession(nullptr, {}, {});
        // Once the switch the user asked for is done.
        QTimer::singleShot(250, this, &SwitcherHUD::readScreens);
    }
    session_ = nullptr;
}

}  // namespace orlo
