#pragma once
#include "platform/linux/MimePasteboard.h"
#include <QObject>

namespace orlo::x11 {

// The CLIPBOARD selection, read and written through Qt. Qt hears of every change of owner
// (XFixes), also of the one that takes the selection away from Orlo; each is one change.
class X11Pasteboard : public QObject, public MimePasteboard {
    Q_OBJECT
public:
    explicit X11Pasteboard(QObject* parent = nullptr);

    qint64 changeCount() override { return changeCount_; }
    void write(const Contents& contents) override;

protected:
    const QMimeData* contents() const override;

private:
    qint64 changeCount_ = 0;
};

}  // namespace orlo::x11
