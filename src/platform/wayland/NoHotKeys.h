#pragma once
#include "platform/HotKeyService.h"

namespace orlo::wayland {

// A compositor that offers Orlo no global shortcuts: every registration is refused, and the
// compositor's own key bindings run `orlo ACTION` instead.
class NoHotKeys : public HotKeyService {
    Q_OBJECT
public:
    using HotKeyService::HotKeyService;
    bool registerHotKey(quint32, quint32, quint32) override { return false; }
    void unregisterHotKey(quint32) override {}
};

}  // namespace orlo::wayland
