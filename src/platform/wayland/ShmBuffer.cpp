#include "platform/wayland/ShmBuffer.h"
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

namespace orlo::wayland {

std::unique_ptr<ShmBuffer> ShmBuffer::create(wl_shm* shm, QSize pixels)
{
    if (!shm || pixels.isEmpty()) return nullptr;
    const int stride = pixels.width() * 4;
    const size_t bytes = size_t(stride) * size_t(pixels.height());
    const int fd = memfd_create("orlo-overlay", MFD_CLOEXEC);
    if (fd < 0) return nullptr;
    std::unique_ptr<ShmBuffer> self(new ShmBuffer);
    if (ftruncate(fd, off_t(bytes)) == 0) {
        void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        if (memory != MAP_FAILED) {
            self->memory_ = memory;
            self->bytes_ = bytes;
        }
    }
    if (!self->memory_) {
        close(fd);
        return nullptr;
    }
    wl_shm_pool* pool = wl_shm_create_pool(shm, fd, int32_t(bytes));
    self->buffer_ = wl_shm_pool_create_buffer(pool, 0, pixels.width(), pixels.height(), stride, WL_SHM_FORMAT_ARGB8888);
    // The buffer keeps what it needs of the pool and the file.
    wl_shm_pool_destroy(pool);
    close(fd);
    static const wl_buffer_listener listener = {[](void* data, wl_buffer*) {
        auto* self = static_cast<ShmBuffer*>(data);
        self->busy_ = false;
        if (self->onRelease_) self->onRelease_();
    }};
    wl_buffer_add_listener(self->buffer_, &listener, self.get());
    self->image_ = QImage(static_cast<uchar*>(self->memory_), pixels.width(), pixels.height(), stride,
                          QImage::Format_ARGB32_Premultiplied);
    return self;
}

ShmBuffer::~ShmBuffer()
{
    image_ = QImage();
    if (buffer_) wl_buffer_destroy(buffer_);
    if (memory_) munmap(memory_, bytes_);
}

}  // namespace orlo::wayland
