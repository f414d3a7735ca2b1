#pragma once
#include "platform/Pasteboard.h"

namespace orlo::wayland {

// A compositor that does not show Orlo the clipboard: nothing is seen, nothing is written.
class NoPasteboard : public Pasteboard {
public:
    qint64 changeCount() override { return 0; }
    QStringList types() override { return {}; }
    QByteArray dataForType(const QString&) override { return {}; }
    QByteArray data(Form) override { return {}; }
    std::optional<QString> string() override { return std::nullopt; }
    QStringList filePaths() override { return {}; }
    std::optional<QColor> color() override { return std::nullopt; }
    void write(const Contents&) override {}
};

}  // namespace orlo::wayland
