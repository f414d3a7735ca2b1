#pragma once
#include "platform/Pasteboard.h"
#include <QObject>

class QMimeData;

namespace orlo::x11 {

// The CLIPBOARD selection, read and written through Qt. Qt hears of every change of owner
// (XFixes), also of the one that takes the selection away from Orlo; each is one change.
class X11Pasteboard : public QObject, public Pasteboard {
    Q_OBJECT
public:
    explicit X11Pasteboard(QObject* parent = nullptr);

    qint64 changeCount() override { return changeCount_; }
    QStringList types() override;
    QByteArray dataForType(const QString& type) override;
    QByteArray data(Form form) override;
    std::optional<QString> string() override;
    QStringList filePaths() override;
    std::optional<QColor> color() override;
    void write(const Contents& contents) override;

private:
    const QMimeData* contents() const;

    qint64 changeCount_ = 0;
};

}  // namespace orlo::x11
