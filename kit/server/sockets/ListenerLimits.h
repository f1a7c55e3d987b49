#pragma once

#include <chrono>
#include <cstddef>

namespace SettingsHandlerKit {

/// Limits that hold for a client at any listener.
///
/// - While more than `maximumUnread` bytes wait for a client to read, its next frames wait too. So a client is never
///   disconnected for the number of replies that it asked for.
/// - A client with more than `maximumWaiting` bytes waiting, besides the frame that is on its way, is disconnected when
///   more is to be sent to it. For all clients together, see `Backlog`.
constexpr std::size_t maximumUnread = 64UL * 1024UL;
constexpr std::size_t maximumWaiting = 1024UL * 1024UL;

/// So many frames of a client are taken in one turn of the event loop, so that its burst does not delay the others. A turn
/// also ends with the frame in which it becomes as long as `longestTurn`: some frames take a hundred times as long as
/// others.
constexpr std::size_t framesPerTurn = 16;
constexpr std::chrono::microseconds longestTurn{300};

/// What is asked of the kernel to keep for each client that does not read, in bytes. It takes twice as much, and that
/// counts as the host's memory, too.
constexpr int kernelBuffer = 64 * 1024;

/// Clients that a listener serves at a time. Bounds what clients that misbehave can cost in memory; and those of all
/// listeners, with the host's own files, need fewer descriptors than the 1,024 that a process usually may have.
constexpr std::size_t maximumClients = 128;

}  // namespace SettingsHandlerKit
