#pragma once
#include "platform/Pasteboard.h"

class QMimeData;

namespace orlo {

// The clipboard's reads over contents that come as MIME types, as they do on X11 and on
// Wayland: which type holds which form, and the file lists and colours of the desktops.
class MimePasteboard : public Pasteboard {
public:
    QStringList types() override;
    QByteArray dataForType(const QString& type) override;
    QByteArray data(Form form) override;
    std::optional<QString> string() override;
    QStringList filePaths() override;
    std::optional<QColor> color() override;

    // What a write offers, as MIME types; the caller takes ownership.
    static QMimeData* mimeData(const Contents& contents);

protected:
    // The contents now; nullptr when there are none.
    virtual const QMimeData* contents() const = 0;
};

}  // namespace orlo
