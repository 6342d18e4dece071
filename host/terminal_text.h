// Escapes, pads and cuts text from a backup for a terminal, and formats numbers. Widths are in code points.
//
//   TerminalText::Escaped("a\x1b[31m\n")       // "a\\x1b[31m\\n"
//   TerminalText::Size(1536)                   // "1.5 KiB"

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace TerminalText {

// `text` with every byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view text);

// ValidUtf8 with control characters escaped, the bidirectional ones too: no text can send commands to the
// terminal or reorder what is shown.
std::string Escaped(std::string_view text);

std::size_t Width(std::string_view text);

// `text` cut to `width`, with an ellipsis for the removed part. Width 0 cuts nothing.
std::string ElidedEnd(std::string text, std::size_t width);

// Escaped `text`, its middle cut likewise.
std::string EscapedMiddle(std::string_view text, std::size_t width);
void AppendEscapedMiddle(std::string_view text, std::size_t width, std::string& to);

// `text` followed (right) or preceded (left) by spaces up to `width`.
std::string PaddedRight(std::string_view text, std::size_t width);
std::string PaddedLeft(std::string_view text, std::size_t width);

std::string Size(std::uint64_t bytes);   // "17 B", "1.5 KiB", "20 MiB"
std::string Count(std::uint64_t count);  // "1,234,567"

// "1 file", "2 files"
std::string Counted(std::uint64_t count, std::string_view noun);

}  // namespace TerminalText
