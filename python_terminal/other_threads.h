#pragma once

namespace python_terminal
{

// The threads of a script: one that still lives at the interpreter's end would take the next one with it. Python cannot
// stop one that waits in the operating system, so what such threads mostly wait for is made to end.
//
// On the interpreter's thread, with the interpreter lock held.

/// From now on a time.sleep of another thread ends when that thread has to. Once, after the interpreter's start.
void prepareOtherThreads();

/// Has threads take turns as often as they do by default, whatever scripts have asked for: this is process-wide, and what
/// ends an interpreter waits for its turn.
void useDefaultSwitchInterval();

/// Ends all other threads, and returns when none is left: at first their handlers of exceptions and their "finally" run,
/// soon nothing of theirs does. One that waits for what only it knows is waited for, however long it takes.
void endOtherThreads();

} // namespace python_terminal
