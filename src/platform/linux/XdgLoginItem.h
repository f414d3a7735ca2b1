#pragma once
#include "platform/LoginItem.h"
#include <QString>

namespace orlo {

// Launch at login through an XDG autostart entry, named after Orlo's desktop id. An entry
// that an earlier Orlo wrote as "orlo.desktop" beside it counts too, and goes when the item is
// registered or unregistered.
class XdgLoginItem : public LoginItem {
public:
    // path: the autostart file; program: what it starts.
    XdgLoginItem(QString path, QString program);
    static QString defaultPath();
    LoginItemStatus status() override;
    bool registerItem() override;
    bool unregisterItem() override;

private:
    QString legacyPath() const;
    bool removeLegacyEntry();

    QString path_;
    QString program_;
};

}  // namespace orlo
