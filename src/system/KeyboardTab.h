#pragma once
#include <QWidget>

namespace orlo {

class KeyboardCleaner;

// The "Keyboard" tab: the keyboard lock and what it does.
class KeyboardTab : public QWidget {
    Q_OBJECT
public:
    explicit KeyboardTab(KeyboardCleaner& cleaner, QWidget* parent = nullptr);
};

}  // namespace orlo
