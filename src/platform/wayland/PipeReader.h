#pragma once
#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace orlo::wayland {

// Reads what another program writes into a pipe, as it comes, without blocking: until the
// writer closes its end, or until more than `limit` bytes came (then the bytes are dropped).
class PipeReader : public QObject {
    Q_OBJECT
public:
    // Takes ownership of fd, which must be non-blocking.
    PipeReader(int fd, qsizetype limit, QObject* parent = nullptr);
    ~PipeReader() override;
    bool isDone() const { return fd_ < 0; }

signals:
    // The whole of what was written; nothing when the writer broke off or wrote too much.
    void finished(const QByteArray& bytes, bool complete);

private:
    void readAvailable();
    void finish(bool complete);

    int fd_;
    qsizetype limit_;
    QByteArray bytes_;
    QSocketNotifier notifier_;
};

}  // namespace orlo::wayland
