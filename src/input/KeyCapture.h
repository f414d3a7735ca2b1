#pragma once
#include "platform/Keys.h"
#include <QObject>
#include <functional>

namespace orlo {

class KeyboardLayout;

// While active, every key press in Orlo's own windows goes to one receiver (the control that
// records a shortcut) instead of its target; modifier keys pressed alone are ignored.
class KeyCapture : public QObject {
    Q_OBJECT
public:
    KeyCapture(KeyboardLayout& layout, std::function<void(const KeyEvent&)> receiver, QObject* parent = nullptr);
    ~KeyCapture() override;
    void setActive(bool active);
    bool isActive() const { return active_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    KeyboardLayout& layout_;
    std::function<void(const KeyEvent&)> receiver_;
    bool active_ = false;
};

}  // namespace orlo
