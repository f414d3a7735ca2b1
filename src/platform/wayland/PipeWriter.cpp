#include "platform/wayland/PipeWriter.h"
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace orlo::wayland {

namespace {
constexpr int StallMs = 5000;
}

void PipeWriter::start(int fd, const QByteArray& bytes, QObject* parent)
{
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    auto* writer = new PipeWriter(fd, bytes, parent);
    writer->writeSome();
}

PipeWriter::PipeWriter(int fd, const QByteArray& bytes, QObject* parent)
    : QObject(parent), fd_(fd), bytes_(bytes), notifier_(fd, QSocketNotifier::Write)
{
    connect(&notifier_, &QSocketNotifier::activated, this, &PipeWriter::writeSome);
    stalled_.setSingleShot(true);
    connect(&stalled_, &QTimer::timeout, this, &QObject::deleteLater);
    stalled_.start(StallMs);
}

PipeWriter::~PipeWriter() { close(fd_); }

void PipeWriter::writeSome()
{
    while (written_ < bytes_.size()) {
        const ssize_t n = write(fd_, bytes_.constData() + written_, size_t(bytes_.size() - written_));
        if (n > 0) {
            written_ += n;
            stalled_.start(StallMs);
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
        break;  // the reader has gone (EPIPE)
    }
    notifier_.setEnabled(false);
    deleteLater();
}

}  // namespace orlo::wayland
