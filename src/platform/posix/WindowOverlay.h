#pragma once
#include "platform/Overlay.h"
#include <QPointer>
#include <QWidget>

namespace orlo {

// The view shown as its own frameless window, kept above the others by the window manager:
// Qt hands it its input and draws it.
class WindowOverlay : public Overlay {
    Q_OBJECT
public:
    void show(QWidget& view, const QRect& geometry) override;
    void hide() override;
    bool isVisible() const override { return view_ && view_->isVisible(); }
    QRect geometry() const override { return view_ ? view_->geometry() : QRect(); }

private:
    QPointer<QWidget> view_;
};

}  // namespace orlo
