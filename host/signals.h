// The signals by which a user or the system ends the program.
//
//   const Interruption interruption;   // from now on they are recorded
//   Interruption::Check();             // where it is safe to end

#pragma once

// Gives SIGINT, SIGTERM and SIGHUP, where their handler is `from`, the handler `to`. A signal that the caller
// of the program ignores stays ignored.
void ReplaceHandlers(void (*from)(int), void (*to)(int));

// Ends the process as the signal does by default.
void EndBySignal(int signal);

// Thrown by Interruption::Check.
struct Interrupted {
  int signal;
};

// While it exists, the signals are only recorded. One object at a time.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // Throws Interrupted when a signal has arrived.
  static void Check();
};
