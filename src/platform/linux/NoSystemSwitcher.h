#pragma once
#include "platform/SystemSwitcher.h"
#include <utility>

namespace orlo {

// X11 window managers and Wayland compositors keep their switching keys in their own
// configuration, out of a client's reach: when they hold the switcher's keys, the switcher's
// settings say so instead, naming the place to free them where the desktop is known.
class NoSystemSwitcher : public SystemSwitcher {
public:
    explicit NoSystemSwitcher(QString place = {}) : place_(std::move(place)) {}
    bool setEnabled(bool) override { return false; }
    QString switchOffPlace() const override { return place_; }

private:
    QString place_;
};

}  // namespace orlo
