#pragma once
#include "platform/linux/MimePasteboard.h"
#include "platform/wayland/ClipboardDevice.h"
#include <QMimeData>
#include <QObject>
#include <QTimer>
#include <vector>

namespace orlo::wayland {

class PipeReader;

// The clipboard through a data-control protocol, as a clipboard manager sees it. A new
// selection of another program is read at once, in the background, in the types Orlo
// records; it counts as a change once read (or once its owner has had long enough), so the
// reads that follow never wait. What Orlo writes it serves itself, as the selection's owner.
class WaylandPasteboard : public QObject, public MimePasteboard {
    Q_OBJECT
public:
    explicit WaylandPasteboard(std::unique_ptr<ClipboardDevice> device, QObject* parent = nullptr);
    ~WaylandPasteboard() override;

    qint64 changeCount() override { return changeCount_; }
    // The types as the owner offers them, markers of password managers included.
    QStringList types() override { return types_; }
    void write(const Contents& contents) override;

    // Which of the offered types are read; empty for a copy a password manager marked.
    static QStringList typesToRead(const QStringList& offered);

signals:
    // A change was counted (for tests and traces).
    void changed();

protected:
    const QMimeData* contents() const override { return contents_.get(); }

private:
    void onSelection(std::shared_ptr<ClipboardDevice::Offer> offer, bool ownEcho);
    void startReading(const std::shared_ptr<ClipboardDevice::Offer>& offer);
    void onRead(const QString& type, const QByteArray& bytes, bool complete);
    void finishReading();
    void serve(const QString& type, int fd);

    std::unique_ptr<ClipboardDevice> device_;
    qint64 changeCount_ = 0;
    QStringList types_;
    std::unique_ptr<QMimeData> contents_;
    // The selection being read.
    QStringList readingTypes_;
    std::unique_ptr<QMimeData> reading_;
    std::vector<std::unique_ptr<PipeReader>> readers_;
    int unread_ = 0;
    QTimer readTimeout_;
};

}  // namespace orlo::wayland
