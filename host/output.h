// Buffered standard output with error checks, and the width and colours of the terminal.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// A failed write to standard output. EPIPE: the reader has gone, so exit silently.
struct OutputFailure {
  int error;
};

// Buffers output. The destructor does not flush.
class Output {
 public:
  void Write(std::string_view lines);
  void Flush();

 private:
  std::string pending_;
};

// The width in columns of the terminal at this descriptor, 0 when it is not a terminal.
std::size_t TerminalWidth(int descriptor);

// What standard output is: its width in columns, 0 when it is not a terminal, and whether colours are wanted.
struct Screen {
  std::size_t width = 0;
  bool colour = false;

  static Screen OfStandardOutput();

  // `text` in a style, plain without colours.
  std::string Bold(std::string_view text) const { return Styled("1", text); }
  std::string Red(std::string_view text) const { return Styled("31", text); }
  std::string Green(std::string_view text) const { return Styled("32", text); }

 private:
  std::string Styled(std::string_view style, std::string_view text) const;
};
