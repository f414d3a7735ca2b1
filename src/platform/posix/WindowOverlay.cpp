#include "platform/posix/WindowOverlay.h"

namespace orlo {

void WindowOverlay::show(QWidget& view, const QRect& geometry)
{
    view_ = &view;
    view.setGeometry(geometry);
    // A window manager that tiles (sway) floats a window of fixed size. Set after the geometry,
    // which the previous fixed size would otherwise bound.
    view.setFixedSize(geometry.size());
    if (view.isVisible()) return;
    view.show();
    view.raise();
}

void WindowOverlay::hide()
{
    if (!view_) return;
    view_->releaseMouse();
    view_->hide();
}

}  // namespace orlo
