#include "progress.h"

#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "common/utils.h"
#include "output.h"
#include "owners.h"
#include "terminal_text.h"

namespace {

constexpr std::string_view kClearLine = "\r\x1b[K";
constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

void ClearLine() {
  // Ignore errors: the terminal may be gone.
  if (::write(STDERR_FILENO, kClearLine.data(), kClearLine.size()) < 0) return;
}

// Clears the line, then ends the process by the signal.
void EndBySignal(int signal) {
  ClearLine();
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

void Handle(void (*handler)(int)) {
  for (const int signal : kEndingSignals) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;
    action.sa_handler = handler;
    ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace

Progress::Progress() : shown_(::isatty(STDERR_FILENO) != 0) {
  if (shown_) Handle(EndBySignal);
}

Progress::~Progress() {
  if (!shown_) return;
  if (drawn_) ClearLine();
  Handle(SIG_DFL);
}

void Progress::Show(Manifest& manifest) {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(100);

  const double seconds = std::max(std::chrono::duration<double>(now - start_).count(), 1e-3);
  std::string line =
      fmt::format("{} entries, {}/s", TerminalText::Count(count_),
                  TerminalText::Count(static_cast<std::uint64_t>(static_cast<double>(count_) / seconds)));
  const auto [done, total] = manifest.Where();
  if (done > 0 && done <= total) {
    const double part = static_cast<double>(done) / static_cast<double>(total);
    const double left = std::min(seconds / part - seconds, 4e9);
    line += fmt::format(", {:.0f} %, {} left", 100 * part,
                        AdoptText(Utils::ConvertSecondsToTime(static_cast<std::uint32_t>(left))));
  }
  // On some terminals, clearing at the last column erases its character.
  const std::size_t room = std::max<std::size_t>(TerminalWidth(STDERR_FILENO), 2) - 1;
  std::fputs(fmt::format("\r{}\x1b[K", TerminalText::ElidedEnd(line, room)).c_str(), stderr);
  drawn_ = true;
}
