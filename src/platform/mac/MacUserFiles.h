#pragma once
#include "platform/UserFiles.h"

namespace orlo::mac {

class MacScripting;

// The caches and logs under the user's Library, and the Finder's Trash.
class MacUserFiles : public UserFiles {
public:
    MacUserFiles(const QString& home, MacScripting& scripting);

    QList<CleanupLocation> cleanupLocations() override;
    quint64 sizeOnDisk(const QString& path, const std::atomic_bool& cancelled) override;
    bool moveToTrash(const QString& path, QString* error) override;
    quint64 trashSize(const std::atomic_bool& cancelled) override;
    bool emptyTrash(QString* error) override;

private:
    QString home_;
    MacScripting& scripting_;
};

}  // namespace orlo::mac
