#pragma once
#include <QElapsedTimer>
#include <QFrame>
#include <QHash>

namespace orlo {

class AppModel;
class ToggleSwitch;

// The panel under the tray icon: a switch per module, the Accessibility warning while
// the permission is missing, the system tools' rows, "Preferences" and "Quit".
class PanelView : public QFrame {
    Q_OBJECT
public:
    explicit PanelView(AppModel& model, QWidget* parent = nullptr);

    // Opens the panel next to the tray icon's rectangle (global coordinates), or closes it
    // when it is open; a click on the icon that just closed it does not reopen it.
    void toggleAt(const QRect& anchor);
    // A message that could not reach the user any other way, shown above the commands
    // until clicked; the click asks for the settings. An empty text takes it away.
    void showNotice(const QString& text);

signals:
    void preferencesRequested();
    void quitRequested();
    void noticeClicked();

protected:
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();

    AppModel& model_;
    QHash<QString, ToggleSwitch*> switches_;
    QWidget* accessibility_;
    QWidget* notice_;
    QElapsedTimer sinceHidden_;
};

}  // namespace orlo
