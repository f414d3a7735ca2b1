#pragma once
#include "platform/Overlay.h"
#include "platform/wayland/KeyRepeat.h"
#include "platform/wayland/ShmBuffer.h"
#include "platform/wayland/XkbKeyEvents.h"
#include <QPointF>
#include <QPointer>
#include <QWidget>
#include <array>
#include <optional>

struct wl_compositor;
struct wl_keyboard;
struct wl_pointer;
struct wl_shm;
struct wl_surface;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace orlo::wayland {

class WaylandConnection;

// The view on a layer-shell surface of the overlay layer, where the compositor offers one:
// above every window, full-screen ones included, never tiled, listed by no task bar, and with
// the keyboard to itself while shown. Qt cannot give its own windows that role, so Orlo draws
// the view into shared memory on its own connection and hands it the seat's keys and clicks.
class LayerShellOverlay : public Overlay {
    Q_OBJECT
public:
    // nullptr when the compositor offers no layer shell.
    static std::unique_ptr<LayerShellOverlay> create(WaylandConnection& connection);
    ~LayerShellOverlay() override;

    void show(QWidget& view, const QRect& geometry) override;
    void hide() override;
    bool isVisible() const override { return layerSurface_ != nullptr; }
    QRect geometry() const override { return geometry_; }
    // The modifiers held while the shown view has the keyboard; nothing otherwise.
    std::optional<Qt::KeyboardModifiers> keyboardModifiers() const;

    // The buffer scale for a screen's device pixel ratio: whole, rounded up (a fractional
    // scale is drawn sharper and scaled down by the compositor), at least 1.
    static int bufferScale(qreal devicePixelRatio);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit LayerShellOverlay(WaylandConnection& connection);
    void followSeat(quint32 capabilities);
    void createSurface(QSize size);
    void destroySurface();
    void draw();
    ShmBuffer* freeBuffer(QSize pixels);
    void sendKey(quint32 key, bool pressed);
    void sendKeyEvent(quint32 key, bool pressed, bool repeated);
    void sendFocus(bool has);
    void sendButton(quint32 button, bool pressed);
    void sendWheel(double value);
    void closeByCompositor();

    static void onConfigure(void* data, zwlr_layer_surface_v1*, uint32_t serial, uint32_t width, uint32_t height);
    static void onClosed(void* data, zwlr_layer_surface_v1*);

    WaylandConnection& connection_;
    wl_compositor* compositor_ = nullptr;
    wl_shm* shm_ = nullptr;
    zwlr_layer_shell_v1* shell_ = nullptr;
    wl_keyboard* keyboard_ = nullptr;
    wl_pointer* pointer_ = nullptr;
    XkbKeyEvents keys_;
    KeyRepeat repeat_;

    QPointer<QWidget> view_;
    QRect geometry_;
    wl_surface* surface_ = nullptr;
    zwlr_layer_surface_v1* layerSurface_ = nullptr;
    QSize configuredSize_;  // empty until the compositor's first configure
    int scale_ = 1;
    std::array<std::unique_ptr<ShmBuffer>, 2> buffers_;
    bool drawPending_ = false;

    bool focusPending_ = false;  // entered, waiting for the modifiers that follow
    bool hasKeyboard_ = false;
    bool pointerInside_ = false;
    QPointF pointerAt_;
    Qt::MouseButtons buttons_;
};

}  // namespace orlo::wayland
