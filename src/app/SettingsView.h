#pragma once
#include <QWidget>

class QListWidget;
class QStackedWidget;

namespace orlo {

class AppModel;

// The "Orlo Settings" window: a sidebar with "General" and the modules, and their pages.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    explicit SettingsView(AppModel& model, QWidget* parent = nullptr);
    // Brings the window forward, on the general page when it was closed.
    void present();
    QString selection() const;
    void select(const QString& id);

private:
    QWidget* modulePage(int index);

    AppModel& model_;
    QListWidget* sidebar_;
    QStackedWidget* pages_;
};

}  // namespace orlo
