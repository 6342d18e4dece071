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
#include "signals.h"
#include "terminal_text.h"

namespace {

constexpr std::string_view kClearLine = "\r\x1b[K";
void ClearLine() {
  // Ignore errors: the terminal may be gone.
  if (::write(STDERR_FILENO, kClearLine.data(), kClearLine.size()) < 0) return;
}

void ClearLineAndEnd(int signal) {
  ClearLine();
  EndBySignal(signal);
}

}  // namespace

Progress::Progress() : shown_(::isatty(STDERR_FILENO) != 0) {
  if (shown_) ReplaceHandlers(SIG_DFL, ClearLineAndEnd);
}

Progress::~Progress() {
  if (!shown_) return;
  ClearLine();
  ReplaceHandlers(ClearLineAndEnd, SIG_DFL);
}

std::string Progress::Elapsed() const {
  return AdoptText(Utils::ConvertSecondsToTime(static_cast<std::uint32_t>(Seconds())));
}

double Progress::Seconds() const {
  return std::chrono::duration<double>(Clock::now() - start_).count();
}

bool Progress::IsDue() {
  const Clock::time_point now = Clock::now();
  if (now < next_) return false;
  next_ = now + std::chrono::milliseconds(100);
  return true;
}

void Progress::Show(Manifest& manifest) {
  if (!IsDue()) return;
  const double rate = static_cast<double>(count_) / std::max(Seconds(), 1e-3);
  const auto [done, total] = manifest.Where();
  Draw(fmt::format("{} entries, {}/s", TerminalText::Count(count_),
                   TerminalText::Count(static_cast<std::uint64_t>(rate))),
       done, total);
}

void Progress::ShowBytes(std::uint64_t done, std::uint64_t total) {
  if (!IsDue()) return;
  const std::string of = done <= total ? " of " + TerminalText::Size(total) : "";
  Draw(TerminalText::Size(done) + of, done, total);
}

// Adds the part done and the time left to `line`, unless the total is unknown or too small.
void Progress::Draw(std::string line, std::uint64_t done, std::uint64_t total) {
  if (done > 0 && done <= total) {
    const double part = static_cast<double>(done) / static_cast<double>(total);
    const double seconds = Seconds();
    const double left = std::min(seconds / part - seconds, 4e9);
    line += fmt::format(", {:.0f} %, {} left", 100 * part,
                        AdoptText(Utils::ConvertSecondsToTime(static_cast<std::uint32_t>(left))));
  }
  // On some terminals, clearing at the last column erases its character.
  const std::size_t room = std::max<std::size_t>(TerminalWidth(STDERR_FILENO), 2) - 1;
  std::fputs(fmt::format("\r{}\x1b[K", TerminalText::ElidedEnd(line, room)).c_str(), stderr);
}
