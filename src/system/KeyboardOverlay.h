#pragma once
#include <QWidget>

class QLabel;
class QProgressBar;

namespace orlo {

class KeyboardCleaner;

// The cover of one screen while the keyboard is locked: what is going on, the Escape hold's
// progress, the seconds left and a "Done" button.
class KeyboardOverlay : public QWidget {
    Q_OBJECT
public:
    // translucent: the desktop blends windows, so the backdrop lets the screen show through.
    KeyboardOverlay(KeyboardCleaner& cleaner, const QRect& screen, bool translucent);
    void present();
    void takeFocus();

signals:
    void doneClicked();

protected:
    void paintEvent(QPaintEvent*) override;

private:
    void showProgress(double progress);
    void showSecondsLeft(int seconds);

    QRect screen_;
    bool translucent_;
    QProgressBar* progress_;
    QLabel* secondsLeft_;
    QWidget* done_;
};

}  // namespace orlo
