#pragma once
#include "platform/UserFiles.h"
#include <QList>
#include <QObject>
#include <QSet>
#include <QThreadPool>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace orlo {

// The disk page's model: how much each program's cache, the logs and the Trash hold,
// measured off the GUI thread, and moving the chosen ones to the Trash. The programs' caches
// start chosen, except those a running program uses. Nothing is deleted except by emptying
// the Trash.
class DiskCleaner : public QObject {
    Q_OBJECT
public:
    struct Item {
        CleanupLocation location;
        std::optional<quint64> size;  // absent until measured
    };

    explicit DiskCleaner(UserFiles& files, QObject* parent = nullptr);
    ~DiskCleaner() override;

    const QList<Item>& items() const { return items_; }
    std::optional<quint64> trashSize() const { return trashSize_; }
    bool isBusy() const { return busy_; }
    int measured() const { return measured_; }
    QString lastError() const { return lastError_; }

    bool isSelected(const QString& id) const { return selected_.contains(id); }
    void setSelected(const QString& id, bool on);
    quint64 selectedSize() const;

    // Measures every group and the Trash again; ignored while busy.
    void scan();
    // Moves the chosen groups to the Trash, then measures again.
    void moveSelectedToTrash();
    // Removes everything in the Trash for good; the caller has asked the user.
    void emptyTrash();

signals:
    void changed();

private:
    void run(std::function<void()> work);
    void measureAll();
    void choose(const CleanupLocation& location);

    UserFiles& files_;
    QList<Item> items_;
    std::optional<quint64> trashSize_;
    QSet<QString> selected_;
    QSet<QString> listed_;
    bool busy_ = false;
    int measured_ = 0;
    QString lastError_;
    std::atomic_bool cancelled_{false};
    QThreadPool worker_;
};

}  // namespace orlo
