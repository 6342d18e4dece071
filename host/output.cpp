#include "output.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

void Output::Write(std::string_view lines) {
  constexpr std::size_t kBlock = 1 << 16;
  pending_ += lines;
  if (pending_.size() >= kBlock) Flush();
}

void Output::Flush() {
  const std::size_t written = std::fwrite(pending_.data(), 1, pending_.size(), stdout);
  const bool complete = written == pending_.size() && std::fflush(stdout) == 0;
  pending_.clear();
  if (!complete) throw OutputFailure{errno};
}

std::size_t TerminalWidth(int descriptor) {
  if (::isatty(descriptor) == 0) return 0;
  constexpr std::size_t kUsualWidth = 80;
  winsize size{};
  const bool known = ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kUsualWidth;
}

Screen Screen::OfStandardOutput() {
  Screen screen;
  screen.width = TerminalWidth(STDOUT_FILENO);
  if (screen.width == 0) return screen;
  const char* const refused = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  screen.colour =
      (refused == nullptr || *refused == '\0') && terminal != nullptr && std::string_view(terminal) != "dumb";
  return screen;
}

std::string Screen::Styled(std::string_view style, std::string_view text) const {
  return colour ? fmt::format("\x1b[{}m{}\x1b[0m", style, text) : std::string(text);
}
