#pragma once
#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

namespace orlo::wayland {

// Writes bytes into a pipe another program reads, as fast as it reads them, without blocking;
// closes the pipe when all is written, when the reader has gone, or when it stopped reading
// for longer than a few seconds. Deletes itself then.
class PipeWriter : public QObject {
    Q_OBJECT
public:
    // Takes ownership of fd.
    static void start(int fd, const QByteArray& bytes, QObject* parent);
    ~PipeWriter() override;

private:
    PipeWriter(int fd, const QByteArray& bytes, QObject* parent);
    void writeSome();

    int fd_;
    QByteArray bytes_;
    qsizetype written_ = 0;
    QSocketNotifier notifier_;
    QTimer stalled_;
};

}  // namespace orlo::wayland
