#include "terminal_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/utf8.h"

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

unsigned char ByteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

// Calls `visit` with each character of `text`; with U+FFFD for each invalid byte.
template <typename Visit>
void ForEachCharacter(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const std::size_t length = Utf8::SequenceLength(text);
    visit(length == 0 ? kReplacement : text.substr(0, length));
    text.remove_prefix(length == 0 ? 1 : length);
  }
}

// REQUIRES: one character of well-formed UTF-8.
unsigned CodePoint(std::string_view character) {
  const std::size_t length = character.size();
  unsigned code = ByteAt(character, 0) & (length == 1 ? 0x7FU : 0x7FU >> length);
  for (std::size_t at = 1; at < length; ++at) code = code << 6 | (ByteAt(character, at) & 0x3FU);
  return code;
}

// U+061C and the marks, embeddings, overrides and isolates of U+2000: they change the order in which the text
// around them is shown.
bool IsBidirectionalControl(unsigned code) {
  return code == 0x61C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

std::string EscapedCharacter(std::string_view character) {
  const unsigned code = CodePoint(character);
  switch (code) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      if (code < 0x20 || code == 0x7F) return fmt::format("\\x{:02x}", code);
      const bool escaped = (code >= 0x80 && code < 0xA0) || IsBidirectionalControl(code);
      return escaped ? fmt::format("\\u{:04x}", code) : std::string(character);
  }
}

bool ContinuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The offset of character `count`, from 0.
std::size_t OffsetOf(std::string_view text, std::size_t count) {
  std::size_t at = 0;
  for (; at < text.size(); ++at) {
    if (!ContinuesCharacter(text[at]) && count-- == 0) break;
  }
  return at;
}

}  // namespace

std::string TerminalText::ValidUtf8(std::string_view text) {
  // Fast path: most names are ASCII, and this runs twice for each file.
  const bool plain = std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
  if (plain) return std::string(text);
  std::string valid;
  ForEachCharacter(text, [&valid](std::string_view character) { valid += character; });
  return valid;
}

std::string TerminalText::Escaped(std::string_view text) {
  std::string escaped;
  AppendEscapedMiddle(text, 0, escaped);
  return escaped;
}

std::size_t TerminalText::Width(std::string_view text) {
  std::size_t width = 0;
  for (const char byte : text) width += ContinuesCharacter(byte) ? 0U : 1U;
  return width;
}

std::string TerminalText::ElidedEnd(std::string text, std::size_t width) {
  if (width == 0 || Width(text) <= width) return text;
  text.resize(OffsetOf(text, width - 1));
  return text.append(kEllipsis);
}

std::string TerminalText::EscapedMiddle(std::string_view text, std::size_t width) {
  std::string escaped;
  AppendEscapedMiddle(text, width, escaped);
  return escaped;
}

void TerminalText::AppendEscapedMiddle(std::string_view text, std::size_t width, std::string& to) {
  const std::size_t start = to.size();
  // Fast path: names again.
  const bool plain = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < 0x7F; });
  if (plain) {
    to += text;
  } else {
    ForEachCharacter(text, [&to](std::string_view character) { to += EscapedCharacter(character); });
  }
  if (width == 0) return;
  const std::string_view escaped = std::string_view(to).substr(start);
  const std::size_t whole = Width(escaped);
  if (whole <= width) return;
  const std::size_t tail = (width - 1) / 2;
  const std::size_t head = width - 1 - tail;
  const std::size_t cut = OffsetOf(escaped, head);
  to.replace(start + cut, OffsetOf(escaped, whole - tail) - cut, kEllipsis);
}

std::string TerminalText::PaddedRight(std::string_view text, std::size_t width) {
  const std::size_t own = Width(text);
  return std::string(text).append(own < width ? width - own : 0, ' ');
}

std::string TerminalText::PaddedLeft(std::string_view text, std::size_t width) {
  const std::size_t own = Width(text);
  return std::string(own < width ? width - own : 0, ' ').append(text);
}

std::string TerminalText::Size(std::uint64_t bytes) {
  if (bytes < 1024) return std::to_string(bytes) + " B";
  constexpr std::array<std::string_view, 6> kUnits = {"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  double value = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  for (; value >= 1023.5 && unit + 1 < kUnits.size(); ++unit) value /= 1024;
  return fmt::format("{:.{}f} {}", value, value < 9.95 ? 1 : 0, kUnits.at(unit));
}

std::string TerminalText::Count(std::uint64_t count) {
  std::string digits = std::to_string(count);
  for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, 1, ',');
  return digits;
}

std::string TerminalText::Counted(std::uint64_t count, std::string_view noun) {
  return fmt::format("{} {}{}", Count(count), noun, count == 1 ? "" : "s");
}
