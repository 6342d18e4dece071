// Standard output: whole lines, failures noticed, and what a terminal allows.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Thrown when standard output takes no more. Nothing that reads it is left to be told when a pipe was closed.
struct OutputFailure {
  int error;
};

// Collects lines and writes many at once.
class Output {
 public:
  void Write(std::string_view lines);
  void Flush();

 private:
  std::string pending_;
};

// The width in columns of the terminal at this descriptor, 0 when it is no terminal.
std::size_t TerminalWidth(int descriptor);

// What standard output is: its width in columns, 0 when it is no terminal, and whether colours are wanted.
struct Screen {
  std::size_t width = 0;
  bool colour = false;

  static Screen OfStandardOutput();

  // `text` in a style when colours are wanted.
  std::string Bold(std::string_view text) const { return Styled("1", text); }
  std::string Red(std::string_view text) const { return Styled("31", text); }
  std::string Green(std::string_view text) const { return Styled("32", text); }

 private:
  std::string Styled(std::string_view style, std::string_view text) const;
};
