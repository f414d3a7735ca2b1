#pragma once
#include "platform/LoginItem.h"
#include <QString>

namespace orlo {

// Launch at login through an XDG autostart entry.
class XdgLoginItem : public LoginItem {
public:
    // path: the autostart file; program: what it starts.
    XdgLoginItem(QString path, QString program);
    static QString defaultPath();
    LoginItemStatus status() override;
    bool registerItem() override;
    bool unregisterItem() override;

private:
    QString path_;
    QString program_;
};

}  // namespace orlo
