// Signals that end a run.
#ifndef PUBLISH_INTERRUPTION_H
#define PUBLISH_INTERRUPTION_H

namespace publish {

/// Lets SIGINT, SIGTERM and SIGHUP end the run at the next page instead of at once, and files that are too
/// long and readers that have gone fail the write instead of ending it.
void watchForInterruption();

/// Whether one of them has come.
bool wasInterrupted();

} // namespace publish

#endif
