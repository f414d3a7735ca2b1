#pragma once
#include <QObject>
#include <QTimer>
#include <functional>

namespace orlo::wayland {

// A Wayland keyboard sends each key once, pressed and let go: holding it down repeats it only
// where the client repeats it itself, at the pace the compositor announces. This repeats the
// key pressed last for as long as it is held, as Qt does for its own windows.
class KeyRepeat : public QObject {
public:
    explicit KeyRepeat(std::function<void(quint32 key)> repeat, QObject* parent = nullptr);
    // Keys per second after a delay in milliseconds; a rate of 0 repeats nothing.
    void setPace(int ratePerSecond, int delayMs);
    // A key went down; it repeats, once the delay is over, if the keymap says it does
    // (modifiers do not), and takes over from the key repeating before.
    void pressed(quint32 key, bool repeats);
    void released(quint32 key);
    // The keyboard went elsewhere, or the view is gone.
    void stop();
    bool isRepeating() const { return timer_.isActive(); }

private:
    void fire();

    std::function<void(quint32)> repeat_;
    QTimer timer_;
    quint32 key_ = 0;
    int rate_ = 25;
    int delay_ = 600;
};

}  // namespace orlo::wayland
