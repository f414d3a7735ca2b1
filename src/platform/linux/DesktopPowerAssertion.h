#pragma once
#include "platform/PowerAssertion.h"
#include "platform/linux/LogindInhibitor.h"
#include "platform/linux/ScreenSaverInhibitor.h"
#include <QHash>

namespace orlo {

// Keeps the display awake every way the session offers, since desktops differ in which they
// heed: the desktop's screen saver service is inhibited, logind's "idle" lock holds back idle
// suspend, and a display server with a saver of its own suspends it (suspendDisplaySaver).
// The power keys are held back by logind's key-handling locks. Every part ends with Orlo's
// connections: the bus services drop what Orlo's connection held.
class DesktopPowerAssertion : public PowerAssertion {
    Q_OBJECT
public:
    explicit DesktopPowerAssertion(QObject* parent = nullptr);
    std::optional<quint32> preventDisplaySleep(const QString& name) override;
    std::optional<quint32> preventPowerKeys(const QString& name) override;
    void release(quint32 assertion) override;

protected:
    // Suspends (true) or resumes the display server's own screen saver; false when it has none.
    virtual bool suspendDisplaySaver(bool suspend)
    {
        Q_UNUSED(suspend);
        return false;
    }

private:
    struct Held {
        bool suspendsSaver = false;
        std::optional<quint32> screenSaver;
        std::optional<quint32> logind;
        int waiting = 0;      // answers not come yet
        bool granted = false;  // by any part
    };
    void onAnswer(quint32 assertion, bool granted);
    quint32 add(Held held);

    ScreenSaverInhibitor screenSaver_;
    LogindInhibitor logind_;
    QHash<quint32, Held> held_;
    QHash<quint32, quint32> byScreenSaver_, byLogind_;  // request -> assertion
    quint32 next_ = 1;
    int suspensions_ = 0;
};

}  // namespace orlo
