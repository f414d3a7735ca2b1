#pragma once
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace orlo {

class DiskCleaner;

// The "Disk" tab: each program's cache, the logs and the developer caches with their sizes,
// moving the chosen ones to the Trash, and emptying the Trash.
class DiskTab : public QWidget {
    Q_OBJECT
public:
    explicit DiskTab(DiskCleaner& cleaner, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void refresh();
    void rebuild();
    void confirmEmptyTrash();

    DiskCleaner& cleaner_;
    QTreeWidget* list_;
    QProgressBar* progress_;
    QLabel* status_;
    QPushButton* rescan_;
    QPushButton* moveToTrash_;
    QLabel* trash_;
    QPushButton* emptyTrash_;
    bool scannedOnce_ = false;
};

}  // namespace orlo
