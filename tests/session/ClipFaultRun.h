#pragma once
#include "VirtualSession.h"
#include <QString>

namespace orlo::testing {

// Kills Orlo with SIGKILL at random moments while text is being copied, starts it again, and
// checks each time that its history still parses and holds every copy that had time to be
// saved: the history is written a second after the last change of a burst of copies, so a
// copy is due once a quiet moment of the save delay plus one polling interval (and a little
// to write) followed it, or followed a later copy, before the kill.
class ClipFaultRun {
public:
    static constexpr int SavedAfterMs = 1000 + 400 + 100;

    struct Figures {
        int cycles = 0;
        int copies = 0;
        int due = 0;   // copies that had time to be saved before their kill
        int lost = 0;  // due copies missing from the history after the restart
        QString failure;  // what went wrong, when the run could not go on
    };

    explicit ClipFaultRun(VirtualSession& session) : session_(session) {}
    Figures run(int cycles, quint32 seed);

private:
    VirtualSession& session_;
};

}  // namespace orlo::testing
