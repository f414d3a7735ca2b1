#pragma once
#include "platform/PowerAssertion.h"
#include "platform/linux/LogindInhibitor.h"
#include "platform/linux/ScreenSaverInhibitor.h"
#include <QHash>

namespace orlo::x11 {

class XConnection;

// Keeps the display awake three ways at once, since desktops differ in which they heed: the
// X server's own screen saver and power saving are suspended, the desktop's screen saver
// service is inhibited, and logind's "idle" lock holds back idle suspend. The power keys are
// held back by logind's key-handling locks. Every part ends with Orlo's connections: the X
// server resumes its saver, the bus services drop what Orlo's connection held.
class X11PowerAssertion : public PowerAssertion {
    Q_OBJECT
public:
    explicit X11PowerAssertion(XConnection& x, QObject* parent = nullptr);
    std::optional<quint32> preventDisplaySleep(const QString& name) override;
    std::optional<quint32> preventPowerKeys(const QString& name) override;
    void release(quint32 assertion) override;

private:
    struct Held {
        bool suspendsX = false;
        std::optional<quint32> screenSaver;
        std::optional<quint32> logind;
        int waiting = 0;      // answers not come yet
        bool granted = false;  // by any part
    };
    bool suspendScreenSaver(bool suspend);
    void onAnswer(quint32 assertion, bool granted);
    quint32 add(Held held);

    XConnection& x_;
    ScreenSaverInhibitor screenSaver_;
    LogindInhibitor logind_;
    QHash<quint32, Held> held_;
    QHash<quint32, quint32> byScreenSaver_, byLogind_;  // request -> assertion
    quint32 next_ = 1;
    int suspensions_ = 0;
};

}  // namespace orlo::x11
