#include "platform/wayland/PipeReader.h"
#include <cerrno>
#include <unistd.h>

namespace orlo::wayland {

PipeReader::PipeReader(int fd, qsizetype limit, QObject* parent)
    : QObject(parent), fd_(fd), limit_(limit), notifier_(fd, QSocketNotifier::Read)
{
    connect(&notifier_, &QSocketNotifier::activated, this, &PipeReader::readAvailable);
}

PipeReader::~PipeReader()
{
    if (fd_ >= 0) close(fd_);
}

void PipeReader::readAvailable()
{
    char chunk[65536];
    for (;;) {
        const ssize_t n = read(fd_, chunk, sizeof chunk);
        if (n > 0) {
            if (bytes_.size() + n > limit_) return finish(false);
            bytes_.append(chunk, n);
            continue;
        }
        if (n == 0) return finish(true);
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) finish(false);
        return;
    }
}

void PipeReader::finish(bool complete)
{
    notifier_.setEnabled(false);
    close(fd_);
    fd_ = -1;
    if (!complete) bytes_.clear();
    emit finished(bytes_, complete);
}

}  // namespace orlo::wayland
