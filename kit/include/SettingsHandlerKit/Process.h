#pragma once

namespace SettingsHandlerKit {

// What a service does first, before it opens anything.

/// Opens /dev/null for each standard stream that is closed. Otherwise a socket or the database would get its number and
/// receive what is printed.
void openClosedStandardStreams();

/// Ignores SIGPIPE, so that a reader of our output or a client that disconnects does not end the process, and SIGXFSZ,
/// so that a write beyond the limit on file sizes fails like one on a full disk.
void ignoreSignalsOfWrites();

}  // namespace SettingsHandlerKit
