#pragma once
#include <QByteArray>
#include <QColor>
#include <QString>
#include <QStringList>
#include <optional>

namespace orlo {

// The system clipboard that every application copies to and pastes from.
class Pasteboard {
public:
    // Typed forms of the contents, whatever the system calls them.
    enum class Form {
        Rtf,
        Html,
        Png,
        Bitmap,  // an image in the system's other bitmap format (any image type but PNG on X11)
    };

    // What one write puts on the pasteboard; absent or empty parts are left out.
    struct Contents {
        std::optional<QString> string;
        QByteArray rtf;
        QByteArray html;
        QByteArray png;
        QStringList filePaths;
        std::optional<QColor> color;
    };

    virtual ~Pasteboard() = default;
    // Grows whenever the contents change, by any application (Orlo included).
    virtual qint64 changeCount() = 0;
    // The types of the contents as the system names them, markers of password managers
    // included; bookkeeping entries that are not content are left out.
    virtual QStringList types() = 0;
    // The bytes of one type as listed by types(); empty when absent.
    virtual QByteArray dataForType(const QString& type) = 0;
    virtual QByteArray data(Form form) = 0;
    virtual std::optional<QString> string() = 0;
    // The paths of copied files (file URLs only), in pasteboard order.
    virtual QStringList filePaths() = 0;
    virtual std::optional<QColor> color() = 0;
    // Replaces the contents.
    virtual void write(const Contents& contents) = 0;
};

}  // namespace orlo
