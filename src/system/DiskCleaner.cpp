#include "system/DiskCleaner.h"

namespace orlo {

DiskCleaner::DiskCleaner(UserFiles& files, QObject* parent) : QObject(parent), files_(files)
{
    worker_.setObjectName(QStringLiteral("orlo.system.disk"));
    worker_.setMaxThreadCount(1);
}

DiskCleaner::~DiskCleaner()
{
    cancelled_ = true;
    worker_.waitForDone();
}

void DiskCleaner::setSelected(const QString& id, bool on)
{
    if (on == selected_.contains(id)) return;
    if (on) selected_.insert(id);
    else selected_.remove(id);
    emit changed();
}

quint64 DiskCleaner::selectedSize() const
{
    quint64 total = 0;
    for (const Item& item : items_)
        if (selected_.contains(item.location.id)) total += item.size.value_or(0);
    return total;
}

void DiskCleaner::run(std::function<void()> work)
{
    busy_ = true;
    measured_ = 0;
    emit changed();
    worker_.start([this, work = std::move(work)] {
        work();
        if (!cancelled_) measureAll();
        QMetaObject::invokeMethod(this, [this] {
            busy_ = false;
            emit changed();
        }, Qt::QueuedConnection);
    });
}

// On the worker: each group's size as soon as it is known, so the page fills in as it goes.
void DiskCleaner::measureAll()
{
    const QList<CleanupLocation> locations = files_.cleanupLocations();
    QMetaObject::invokeMethod(this, [this, locations] {
        QList<Item> fresh;
        QSet<QString> listed;
        for (const CleanupLocation& location : locations) {
            fresh << Item{location, std::nullopt};
            choose(location);
            listed.insert(location.id);
        }
        items_ = fresh;
        listed_ = listed;
        trashSize_.reset();
        emit changed();
    }, Qt::QueuedConnection);
    for (const CleanupLocation& location : locations) {
        quint64 size = 0;
        for (const QString& path : location.paths) size += files_.sizeOnDisk(path, cancelled_);
        if (cancelled_) return;
        QMetaObject::invokeMethod(this, [this, id = location.id, size] {
            for (Item& item : items_)
                if (item.location.id == id) item.size = size;
            ++measured_;
            emit changed();
        }, Qt::QueuedConnection);
    }
    const quint64 trash = files_.trashSize(cancelled_);
    QMetaObject::invokeMethod(this, [this, trash] {
        trashSize_ = trash;
        emit changed();
    }, Qt::QueuedConnection);
}

// A program's cache is chosen when first listed; one that a running program uses is not,
// nor kept chosen while the program runs.
void DiskCleaner::choose(const CleanupLocation& location)
{
    if (!location.usedBy.isEmpty()) selected_.remove(location.id);
    else if (location.appCache && !listed_.contains(location.id)) selected_.insert(location.id);
}

void DiskCleaner::scan()
{
    if (busy_) return;
    lastError_.clear();
    run([] {});
}

void DiskCleaner::moveSelectedToTrash()
{
    if (busy_) return;
    QStringList paths;
    for (const Item& item : std::as_const(items_))
        if (selected_.contains(item.location.id)) paths << item.location.paths;
    selected_.clear();
    lastError_.clear();
    run([this, paths] {
        QStringList failures;
        for (const QString& path : paths) {
            QString error;
            if (!files_.moveToTrash(path, &error)) failures << error;
        }
        if (failures.isEmpty()) return;
        QMetaObject::invokeMethod(this, [this, failures] {
            lastError_ = failures.size() == 1 ? failures.first()
                                               : tr("%1 items could not be moved to the Trash: %2").arg(failures.size()).arg(failures.first());
        }, Qt::QueuedConnection);
    });
}

void DiskCleaner::emptyTrash()
{
    if (busy_) return;
    lastError_.clear();
    run([this] {
        QString error;
        if (files_.emptyTrash(&error)) return;
        QMetaObject::invokeMethod(this, [this, error] { lastError_ = error; }, Qt::QueuedConnection);
    });
}

}  // namespace orlo
