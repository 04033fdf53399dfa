#pragma once

/// A worker lives as long as the application that started it, no longer and no shorter.
namespace boxlift::worker {

/// Signals that were meant for the application leave this process alone.
void ignoreForeignSignals();

/// Before the sandbox: the system ends this process when the thread that started it ends, where it
/// can do that.
void askToBeEnded();

/// Ends this process, whatever it is doing, when the other end of `socket` is closed. Starts a
/// thread.
void endWithParent(int socket);

} // namespace boxlift::worker
