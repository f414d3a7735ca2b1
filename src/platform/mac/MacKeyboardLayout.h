#pragma once
#include "platform/KeyboardLayout.h"
#include <memory>

namespace orlo::mac {

// Characters of keys in the current keyboard layout (Text Input Sources and UCKeyTranslate),
// and the key code and modifier flags of the key events Qt delivers.
class MacKeyboardLayout : public KeyboardLayout {
    Q_OBJECT
public:
    explicit MacKeyboardLayout(QObject* parent = nullptr);
    ~MacKeyboardLayout() override;

    std::optional<QString> character(quint32 keyCode) override;
    std::optional<KeyEvent> keyEvent(const QKeyEvent& event) override;

private:
    std::optional<QString> translate(quint32 keyCode, quint32 carbonModifierState);

    struct Observer;
    std::unique_ptr<Observer> observer_;
};

}  // namespace orlo::mac
