#include "signals.h"

#include <signal.h>

#include <initializer_list>

namespace {

volatile sig_atomic_t arrived = 0;

void Record(int signal) {
  arrived = signal;
}

}  // namespace

void ReplaceHandlers(void (*from)(int), void (*to)(int)) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != from) continue;
    action.sa_handler = to;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
  }
}

void EndBySignal(int signal) {
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

Interruption::Interruption() {
  ReplaceHandlers(SIG_DFL, Record);
}

Interruption::~Interruption() {
  ReplaceHandlers(Record, SIG_DFL);
}

void Interruption::Check() {
  if (arrived != 0) throw Interrupted{arrived};
}
