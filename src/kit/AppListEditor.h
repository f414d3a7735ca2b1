#pragma once
#include <QGroupBox>
#include <QList>
#include <QString>

class QVBoxLayout;

namespace orlo {

class Workspace;

// A settings section that lists applications, one row each with its icon, its name and a
// Remove button, and adds more through a file dialog on the applications folder. The caller
// owns the list: the editor only shows it and reports the user's changes.
class AppListEditor : public QGroupBox {
    Q_OBJECT
public:
    struct App {
        QString id;
        QString name;  // empty: the row shows the id alone
        bool operator==(const App&) const = default;
    };

    // dialogAccept labels the dialog's accept button ("Exclude", "Ignore").
    AppListEditor(const QString& title, const QString& dialogAccept, Workspace& workspace, QWidget* parent = nullptr);

    // Shown in place of the rows while the list is empty; none by default.
    void setEmptyText(const QString& text);
    void setApps(const QList<App>& apps);
    const QList<App>& apps() const { return apps_; }
    // Adds the applications of these files of the applications folder; ones already listed,
    // or not applications, are skipped.
    void addApplications(const QStringList& paths);

signals:
    // The user removed or added applications.
    void appsChanged(const QList<AppListEditor::App>& apps);

private:
    void rebuildRows();
    void chooseApplications();
    void change(const QList<App>& apps);

    Workspace& workspace_;
    QString dialogAccept_;
    QString emptyText_;
    QList<App> apps_;
    QVBoxLayout* rows_;
};

}  // namespace orlo
