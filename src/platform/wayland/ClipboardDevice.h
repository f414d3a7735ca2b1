#pragma once
#include <QObject>
#include <QStringList>
#include <memory>

namespace orlo::wayland {

class WaylandConnection;

// The seat's clipboard as the compositor shows it to a clipboard manager: every new
// selection, whoever makes it, and a selection of Orlo's own that others paste from.
class ClipboardDevice : public QObject {
    Q_OBJECT
public:
    // One selection of another client, readable by type while it lasts.
    class Offer {
    public:
        virtual ~Offer() = default;
        virtual QStringList types() const = 0;
        // Asks the owner to write the contents of a type to fd (which the offer closes on
        // its side at once); the reader reads until the owner closes its end.
        virtual void receive(const QString& type, int fd) = 0;
    };

    // The data-control protocol the compositor offers (the ext one before the wlroots one),
    // or nullptr when it offers neither.
    static std::unique_ptr<ClipboardDevice> create(WaylandConnection& connection);

    // Makes Orlo the owner of the selection, offering these types; sendRequested asks for them.
    virtual void setSelection(const QStringList& types) = 0;

signals:
    // A new selection: nullptr when the clipboard was emptied. ownEcho: the compositor
    // announcing the selection Orlo has just made itself.
    void selectionChanged(std::shared_ptr<orlo::wayland::ClipboardDevice::Offer> offer, bool ownEcho);
    // Another client pastes Orlo's selection: write the type's bytes to fd and close it.
    void sendRequested(const QString& type, int fd);
};

}  // namespace orlo::wayland
