#pragma once

namespace orlo {

// SIGTERM, SIGINT and SIGHUP end Orlo the orderly way, through the event loop, so that
// everything quitting saves and restores still happens.
void quitOnTerminationSignals();

}  // namespace orlo
