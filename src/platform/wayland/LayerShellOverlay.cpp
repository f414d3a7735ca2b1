#include "platform/wayland/LayerShellOverlay.h"
#include "platform/wayland/WaylandConnection.h"
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>
#include <cmath>
#include <linux/input-event-codes.h>
#include <wayland-client.h>
#include "wlr-layer-shell-unstable-v1-client-protocol.h"

namespace orlo::wayland {

namespace {
// Where a view wants its keys: its window first, which the key taps watch, then the widget.
QObject* keyTarget(QWidget& view) { return view.windowHandle() ? static_cast<QObject*>(view.windowHandle()) : &view; }

Qt::MouseButton qtButton(quint32 button)
{
    switch (button) {
    case BTN_LEFT: return Qt::LeftButton;
    case BTN_RIGHT: return Qt::RightButton;
    case BTN_MIDDLE: return Qt::MiddleButton;
    default: return Qt::NoButton;
    }
}

}  // namespace

int LayerShellOverlay::bufferScale(qreal devicePixelRatio)
{
    if (!(devicePixelRatio >= 1)) return 1;
    return int(std::ceil(devicePixelRatio - 1e-6));
}

std::unique_ptr<LayerShellOverlay> LayerShellOverlay::create(WaylandConnection& connection)
{
    if (!connection.offers(zwlr_layer_shell_v1_interface.name) || !connection.offers(wl_compositor_interface.name) ||
        !connection.offers(wl_shm_interface.name))
        return nullptr;
    std::unique_ptr<LayerShellOverlay> self(new LayerShellOverlay(connection));
    if (!self->compositor_ || !self->shm_ || !self->shell_) return nullptr;
    return self;
}

LayerShellOverlay::LayerShellOverlay(WaylandConnection& connection)
    : connection_(connection), repeat_([this](quint32 key) { sendKeyEvent(key, true, true); })
{
    // Buffer scales need version 3 of the compositor, damage in buffer pixels version 4.
    compositor_ = connection.bind<wl_compositor>(&wl_compositor_interface, 4);
    shm_ = connection.bind<wl_shm>(&wl_shm_interface, 1);
    shell_ = connection.bind<zwlr_layer_shell_v1>(&zwlr_layer_shell_v1_interface, 4);
    followSeat(connection.seatCapabilities());
    connect(&connection, &WaylandConnection::seatCapabilitiesChanged, this, &LayerShellOverlay::followSeat);
    connect(&connection, &WaylandConnection::lost, this, &LayerShellOverlay::closeByCompositor);
}

LayerShellOverlay::~LayerShellOverlay()
{
    destroySurface();
    if (keyboard_) wl_keyboard_destroy(keyboard_);
    if (pointer_) wl_pointer_destroy(pointer_);
    if (shell_) zwlr_layer_shell_v1_destroy(shell_);
    if (shm_) wl_shm_destroy(shm_);
    if (compositor_) wl_compositor_destroy(compositor_);
    // Orlo may be quitting: the keyboard goes back before the connection closes.
    if (!connection_.isLost()) wl_display_flush(connection_.display());
}

void LayerShellOverlay::followSeat(quint32 capabilities)
{
    wl_seat* seat = connection_.seat();
    if (!seat) return;
    if (!keyboard_ && (capabilities & WL_SEAT_CAPABILITY_KEYBOARD)) {
        static const wl_keyboard_listener listener = {
            .keymap = [](void* data, wl_keyboard*, uint32_t format, int32_t fd, uint32_t size) {
                auto& keys = static_cast<LayerShellOverlay*>(data)->keys_;
                keys.setKeymap(readKeymap(keys.context(), format, fd, size));
            },
            .enter = [](void* data, wl_keyboard*, uint32_t, wl_surface* surface, wl_array*) {
                auto* self = static_cast<LayerShellOverlay*>(data);
                self->focusPending_ = surface && surface == self->surface_;
            },
            .leave = [](void* data, wl_keyboard*, uint32_t, wl_surface*) {
                auto* self = static_cast<LayerShellOverlay*>(data);
                self->focusPending_ = false;
                self->repeat_.stop();
                if (self->hasKeyboard_) self->sendFocus(false);
            },
            .key = [](void* data, wl_keyboard*, uint32_t, uint32_t, uint32_t key, uint32_t state) {
                static_cast<LayerShellOverlay*>(data)->sendKey(key, state == WL_KEYBOARD_KEY_STATE_PRESSED);
            },
            // The compositor follows each entry with the modifiers held: only then does the view
            // learn that it has the keyboard, and which modifiers are down.
            .modifiers = [](void* data, wl_keyboard*, uint32_t, uint32_t depressed, uint32_t latched, uint32_t locked, uint32_t group) {
                auto* self = static_cast<LayerShellOverlay*>(data);
                self->keys_.setModifiers(depressed, latched, locked, group);
                if (std::exchange(self->focusPending_, false)) self->sendFocus(true);
            },
            .repeat_info = [](void* data, wl_keyboard*, int32_t rate, int32_t delay) {
                static_cast<LayerShellOverlay*>(data)->repeat_.setPace(rate, delay);
            },
        };
        keyboard_ = wl_seat_get_keyboard(seat);
        wl_keyboard_add_listener(keyboard_, &listener, this);
    }
    if (!pointer_ && (capabilities & WL_SEAT_CAPABILITY_POINTER)) {
        static const wl_pointer_listener listener = {
            .enter = [](void* data, wl_pointer*, uint32_t, wl_surface* surface, wl_fixed_t x, wl_fixed_t y) {
                auto* self = static_cast<LayerShellOverlay*>(data);
                self->pointerInside_ = surface && surface == self->surface_;
                self->pointerAt_ = QPointF(wl_fixed_to_double(x), wl_fixed_to_double(y));
            },
            .leave = [](void* data, wl_pointer*, uint32_t, wl_surface*) {
                auto* self = static_cast<LayerShellOverlay*>(data);
                self->pointerInside_ = false;
                self->buttons_ = Qt::NoButton;
            },
            .motion = [](void* data, wl_pointer*, uint32_t, wl_fixed_t x, wl_fixed_t y) {
                static_cast<LayerShellOverlay*>(data)->pointerAt_ = QPointF(wl_fixed_to_double(x), wl_fixed_to_double(y));
            },
            .button = [](void* data, wl_pointer*, uint32_t, uint32_t, uint32_t button, uint32_t state) {
                static_cast<LayerShellOverlay*>(data)->sendButton(button, state == WL_POINTER_BUTTON_STATE_PRESSED);
            },
            .axis = [](void* data, wl_pointer*, uint32_t, uint32_t axis, wl_fixed_t value) {
                if (axis == WL_POINTER_AXIS_VERTICAL_SCROLL) static_cast<LayerShellOverlay*>(data)->sendWheel(wl_fixed_to_double(value));
            },
            .frame = [](void*, wl_pointer*) {},
            .axis_source = [](void*, wl_pointer*, uint32_t) {},
            .axis_stop = [](void*, wl_pointer*, uint32_t, uint32_t) {},
            .axis_discrete = [](void*, wl_pointer*, uint32_t, int32_t) {},
            .axis_value120 = [](void*, wl_pointer*, uint32_t, int32_t) {},
        };
        pointer_ = wl_seat_get_pointer(seat);
        wl_pointer_add_listener(pointer_, &listener, this);
    }
}

void LayerShellOverlay::show(QWidget& view, const QRect& geometry)
{
    if (view_ && view_ != &view) hide();
    view_ = &view;
    geometry_ = geometry;
    const QScreen* screen = QGuiApplication::screenAt(geometry.center());
    if (!screen) screen = QGuiApplication::primaryScreen();
    const int scale = bufferScale(screen ? screen->devicePixelRatio() : 1.0);
    if (scale != scale_) drawPending_ = true;
    scale_ = scale;
    // Visible to Qt, so that it lays out, paints and asks to be drawn again, but never shown
    // by Qt as a window of its own.
    view.setAttribute(Qt::WA_DontShowOnScreen, true);
    view.setFixedSize(geometry.size());
    if (!view.isVisible()) {
        view.installEventFilter(this);
        view.show();
    }
    if (!layerSurface_) {
        createSurface(geometry.size());
    } else if (geometry.size() != configuredSize_) {
        zwlr_layer_surface_v1_set_size(layerSurface_, uint32_t(geometry.width()), uint32_t(geometry.height()));
        wl_surface_commit(surface_);
    } else if (std::exchange(drawPending_, false)) {
        draw();
    }
}

void LayerShellOverlay::createSurface(QSize size)
{
    surface_ = wl_compositor_create_surface(compositor_);
    // No output named: the compositor puts it on the one the user works on, and centres it
    // there (no anchor) in the room its panels leave.
    layerSurface_ = zwlr_layer_shell_v1_get_layer_surface(shell_, surface_, nullptr, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "orlo");
    static const zwlr_layer_surface_v1_listener listener = {&onConfigure, &onClosed};
    zwlr_layer_surface_v1_add_listener(layerSurface_, &listener, this);
    zwlr_layer_surface_v1_set_size(layerSurface_, uint32_t(size.width()), uint32_t(size.height()));
    zwlr_layer_surface_v1_set_keyboard_interactivity(layerSurface_, ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE);
    // The first commit carries no buffer: the compositor answers with the size to draw.
    wl_surface_commit(surface_);
}

void LayerShellOverlay::onConfigure(void* data, zwlr_layer_surface_v1* layerSurface, uint32_t serial, uint32_t width, uint32_t height)
{
    auto* self = static_cast<LayerShellOverlay*>(data);
    zwlr_layer_surface_v1_ack_configure(layerSurface, serial);
    const QSize asked = self->geometry_.size();
    self->configuredSize_ = QSize(width ? int(width) : asked.width(), height ? int(height) : asked.height());
    self->draw();
}

void LayerShellOverlay::onClosed(void* data, zwlr_layer_surface_v1*) { static_cast<LayerShellOverlay*>(data)->closeByCompositor(); }

void LayerShellOverlay::closeByCompositor()
{
    const bool wasShown = layerSurface_ != nullptr;
    hide();
    if (wasShown) emit closed();
}

void LayerShellOverlay::hide()
{
    destroySurface();
    if (!view_) return;
    view_->removeEventFilter(this);
    view_->hide();
    view_->setAttribute(Qt::WA_DontShowOnScreen, false);
    view_ = nullptr;
}

void LayerShellOverlay::destroySurface()
{
    // Destroying the surface is what gives the keyboard back.
    if (layerSurface_) zwlr_layer_surface_v1_destroy(layerSurface_);
    if (surface_) wl_surface_destroy(surface_);
    layerSurface_ = nullptr;
    surface_ = nullptr;
    for (auto& buffer : buffers_) buffer.reset();
    configuredSize_ = QSize();
    focusPending_ = hasKeyboard_ = pointerInside_ = false;
    repeat_.stop();
    buttons_ = Qt::NoButton;
}

bool LayerShellOverlay::eventFilter(QObject* watched, QEvent* event)
{
    // Qt asks a view to be drawn again whenever it changes: a selection, a letter typed, an
    // icon arriving. The view paints itself first; the surface follows.
    if (watched == view_ && event->type() == QEvent::UpdateRequest)
        QMetaObject::invokeMethod(this, &LayerShellOverlay::draw, Qt::QueuedConnection);
    return false;
}

ShmBuffer* LayerShellOverlay::freeBuffer(QSize pixels)
{
    for (auto& buffer : buffers_)
        if (buffer && !buffer->isBusy() && buffer->image().size() == pixels) return buffer.get();
    for (auto& buffer : buffers_)
        if (!buffer || !buffer->isBusy()) {
            buffer = ShmBuffer::create(shm_, pixels);
            if (buffer) buffer->setOnRelease([this] {
                if (drawPending_) QMetaObject::invokeMethod(this, &LayerShellOverlay::draw, Qt::QueuedConnection);
            });
            return buffer.get();
        }
    return nullptr;
}

void LayerShellOverlay::draw()
{
    if (!view_ || !layerSurface_ || configuredSize_.isEmpty()) return;
    const QSize pixels = configuredSize_ * scale_;
    ShmBuffer* target = freeBuffer(pixels);
    if (!target) {
        // Both buffers are on the screen: the next release draws. Only a buffer's release can
        // make both busy, so one is always coming back.
        drawPending_ = true;
        return;
    }
    drawPending_ = false;
    QImage& image = target->image();
    image.setDevicePixelRatio(scale_);
    image.fill(Qt::transparent);
    view_->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    wl_surface_set_buffer_scale(surface_, scale_);
    wl_surface_attach(surface_, target->buffer(), 0, 0);
    if (wl_proxy_get_version(reinterpret_cast<wl_proxy*>(surface_)) >= WL_SURFACE_DAMAGE_BUFFER_SINCE_VERSION)
        wl_surface_damage_buffer(surface_, 0, 0, pixels.width(), pixels.height());
    else
        wl_surface_damage(surface_, 0, 0, configuredSize_.width(), configuredSize_.height());
    wl_surface_commit(surface_);
    target->setBusy();
}

std::optional<Qt::KeyboardModifiers> LayerShellOverlay::keyboardModifiers() const
{
    if (!hasKeyboard_) return std::nullopt;
    return keys_.modifiers();
}

void LayerShellOverlay::sendFocus(bool has)
{
    hasKeyboard_ = has;
    if (!view_) return;
    QEvent event(has ? QEvent::WindowActivate : QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(view_, &event);
}

void LayerShellOverlay::sendKey(quint32 key, bool pressed)
{
    if (!hasKeyboard_ || !view_) return;
    if (pressed)
        repeat_.pressed(key, keys_.repeats(key));
    else
        repeat_.released(key);
    sendKeyEvent(key, pressed, false);
}

void LayerShellOverlay::sendKeyEvent(quint32 key, bool pressed, bool repeated)
{
    if (!hasKeyboard_ || !view_) return;
    if (const auto event = keys_.keyEvent(key, pressed, repeated)) QCoreApplication::sendEvent(keyTarget(*view_), event.get());
}

void LayerShellOverlay::sendButton(quint32 button, bool pressed)
{
    const Qt::MouseButton qt = qtButton(button);
    if (!pointerInside_ || !view_ || qt == Qt::NoButton) return;
    buttons_.setFlag(qt, pressed);
    QMouseEvent event(pressed ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease, pointerAt_,
                      QPointF(geometry_.topLeft()) + pointerAt_, qt, buttons_, keys_.modifiers());
    QCoreApplication::sendEvent(view_, &event);
}

void LayerShellOverlay::sendWheel(double value)
{
    if (!pointerInside_ || !view_) return;
    // A notch of the wheel scrolls 15 by the compositors' count, 120 by Qt's, and the other way.
    const QPoint angle(0, int(std::lround(-value * 8)));
    QWheelEvent event(pointerAt_, QPointF(geometry_.topLeft()) + pointerAt_, QPoint(), angle, buttons_, keys_.modifiers(),
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(view_, &event);
}

}  // namespace orlo::wayland
