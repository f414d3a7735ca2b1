#pragma once
#include <QImage>
#include <functional>
#include <memory>

struct wl_buffer;
struct wl_shm;

namespace orlo::wayland {

// One buffer of pixels in a memory file shared with the compositor, which Qt paints into
// (premultiplied ARGB, the compositor's ARGB8888). It is busy from being attached to a
// surface until the compositor releases it.
class ShmBuffer {
public:
    // nullptr when the memory cannot be had.
    static std::unique_ptr<ShmBuffer> create(wl_shm* shm, QSize pixels);
    ~ShmBuffer();
    ShmBuffer(const ShmBuffer&) = delete;
    ShmBuffer& operator=(const ShmBuffer&) = delete;

    wl_buffer* buffer() const { return buffer_; }
    QImage& image() { return image_; }
    bool isBusy() const { return busy_; }
    void setBusy() { busy_ = true; }
    // Called when the compositor gives the buffer back.
    void setOnRelease(std::function<void()> onRelease) { onRelease_ = std::move(onRelease); }

private:
    ShmBuffer() = default;

    void* memory_ = nullptr;
    size_t bytes_ = 0;
    wl_buffer* buffer_ = nullptr;
    QImage image_;
    bool busy_ = false;
    std::function<void()> onRelease_;
};

}  // namespace orlo::wayland
