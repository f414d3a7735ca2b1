#pragma once
#include "clipboard/ClipHistoryFile.h"
#include "clipboard/ClipItem.h"
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <optional>

namespace orlo {

class ClipboardSettings;
class Pasteboard;
class Workspace;

// The clipboard history: watches the pasteboard, records each new copy once (newest
// first), keeps images as PNG files beside the history, trims to the configured size while
// keeping pinned items, saves one second after the last change, and puts chosen items back.
class ClipboardStore : public QObject {
    Q_OBJECT
public:
    static constexpr int PollIntervalMs = 400;
    static constexpr int SaveDelayMs = 1000;
    // Contents marked with any of these types (passwords, transient and generated data) are never recorded.
    static const QStringList skipTypes;
    // Password managers on Linux mark secrets with this type holding "secret".
    static const QString passwordHintType;

    struct Capture {
        ClipItem item;
        QByteArray png;  // image items: the bytes to write to "images"
    };

    ClipboardStore(ClipboardSettings& settings, Pasteboard& pasteboard, Workspace& workspace,
                   QString folder = defaultFolder(), QObject* parent = nullptr);
    ~ClipboardStore() override;
    // "Orlo/Clipboard" in the user's data folder.
    static QString defaultFolder();

    const QList<ClipItem>& items() const { return items_; }
    QString folder() const { return folder_; }
    QString imagesFolder() const;
    bool isLoaded() const { return loaded_; }
    bool isPolling() const { return timer_.isActive(); }
    bool hasPendingSave() const { return saveTimer_.isActive(); }

    // Loads the history the first time, then polls the pasteboard.
    void start();
    // Stops polling and saves at once when a save is pending; returns once it is on disk.
    void stop();
    void load();
    void poll();
    void trim();
    // Writes the history now and waits for it (quitting); saveSoon's writes go to a worker
    // thread so that a long history never holds up keys and pickers.
    void saveNow();
    void saveInBackground();

    void copyToPasteboard(const ClipItem& item, bool plainText);
    void togglePin(const ClipItem& item);
    void deleteItem(const ClipItem& item);
    // Removes every unpinned item.
    void clearHistory();

    // Turns the pasteboard's contents into a new item: files, then text, then an image, then a colour.
    static std::optional<Capture> read(Pasteboard& pasteboard);
    // PNG bytes of the pasteboard's image, converting another bitmap format; empty when none.
    static QByteArray imagePNG(Pasteboard& pasteboard);
    // Records a capture, folding it into an earlier item with the same content.
    void insert(ClipItem item, const QByteArray& png);

signals:
    void itemsChanged();

private:
    // Removes the unpinned items beyond the limit; whether any went.
    bool trimItems();
    void scheduleSave();
    // Creates the folder and moves an unreadable file aside; an error text when that failed.
    QString prepareToWrite();
    static void writeFile(const ClipHistoryFile& file, const QList<ClipItem>& items);
    void deleteFiles(const ClipItem& item);
    void removeOrphanImages();
    bool writeImage(const QString& name, const QByteArray& png);
    qsizetype indexOf(const QUuid& id) const;

    ClipboardSettings& settings_;
    Pasteboard& pasteboard_;
    Workspace& workspace_;
    QString folder_;
    ClipHistoryFile file_;
    QList<ClipItem> items_;
    QTimer timer_;
    QTimer saveTimer_;
    QThreadPool writer_;  // one thread: writes land in the order they were made
    qint64 lastChangeCount_;
    bool loaded_ = false;
    // The file on disk could not be read: move it aside before the first save replaces it.
    bool fileUnreadable_ = false;
};

}  // namespace orlo
