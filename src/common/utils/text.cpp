#include "common/utils/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "common/text_or_empty.h"

namespace {

constexpr std::size_t kLongestJoin = 2'147'483'646;

struct FreeBlock {
  void operator()(char* block) const { std::free(block); }
};

char* NewText(std::size_t length) {
  auto* const text = static_cast<char*>(std::malloc(length + 1));
  if (text != nullptr) text[length] = '\0';
  return text;
}

char* CopyTo(char* write, std::string_view text) {
  std::memcpy(write, text.data(), text.size());
  return write + text.size();
}

// The least distance at which calling a vectorized search is worth more than looking at byte after byte.
constexpr std::ptrdiff_t kNear = 16;

// A pattern that is looked for, perhaps many times.
//
// The search looks at two of the pattern's bytes for every place in a block of them. The loop has no
// branches, so compilers turn it into vector instructions. A block in which the pattern may begin is looked
// at again in smaller parts, with a third byte: in texts, whose letters are common ones, two bytes alone
// leave too many places to try.
class Pattern {
 public:
  explicit Pattern(std::string_view text) : text_(text) {
    if (text.empty()) return;
    // Two different bytes, where there are two: a run of one byte is what is most likely to nearly match.
    const std::size_t other = text.find_last_not_of(text.front());
    later_ = other != std::string_view::npos ? other : text.size() - 1;
  }

  std::size_t Size() const { return text_.size(); }

  // The first place where it stands in [at, end), or null. The empty pattern stands nowhere.
  const char* FindIn(const char* at, const char* end) const {
    const auto length = static_cast<std::size_t>(end - at);
    if (text_.empty() || text_.size() > length) return nullptr;
    if (text_.size() == 1) return static_cast<const char*>(std::memchr(at, text_.front(), length));
    const char* const stop = end - text_.size() + 1;  // behind the last place
    const char* const near = at + std::min(kNear, stop - at);
    const char* const found = FindInSteps<1>(at, near);
    return found != nullptr ? found : FindInSteps<kBlock>(near, stop);
  }

 private:
  static constexpr std::ptrdiff_t kBlock = 256;
  static constexpr std::ptrdiff_t kPart = 32;

  bool StandsAt(const char* at) const {
    return ((at[0] ^ text_[0]) | (at[later_] ^ text_[later_])) == 0 &&
           std::memcmp(at, text_.data(), text_.size()) == 0;
  }

  // Whether it may begin at one of the kStep places from `at` on.
  template <std::ptrdiff_t kStep>
  bool MayBeginIn(const char* at) const {
    const std::size_t half = text_.size() / 2;
    unsigned char closest = 0xFF;  // zero for bytes that all agree
    for (std::ptrdiff_t i = 0; i < kStep; ++i) {
      int difference = (at[i] ^ text_[0]) | ((at + later_)[i] ^ text_[later_]);
      if constexpr (kStep == kPart) difference |= (at + half)[i] ^ text_[half];
      closest = std::min(closest, static_cast<unsigned char>(difference));
    }
    return closest == 0;
  }

  // The first place in [at, stop), looked at in steps of that many, or null.
  template <std::ptrdiff_t kStep>
  const char* FindInSteps(const char* at, const char* stop) const {
    constexpr std::ptrdiff_t kSmaller = kStep == kBlock ? kPart : 1;
    for (; stop - at >= kStep; at += kStep) {
      if constexpr (kStep == 1) {
        if (StandsAt(at)) return at;
      } else if (MayBeginIn<kStep>(at)) {
        if (const char* const found = FindInSteps<kSmaller>(at, at + kStep)) return found;
      }
    }
    return kStep == 1 ? nullptr : FindInSteps<kSmaller>(at, stop);
  }

  std::string_view text_;
  std::size_t later_ = 0;
};

bool PointsInto(std::string_view bytes, const char* pointer) {
  const std::less_equal<const char*> not_after;
  return not_after(bytes.data(), pointer) && not_after(pointer, bytes.data() + bytes.size());
}

std::size_t CountOf(std::string_view text, const Pattern& search) {
  const char* const end = text.data() + text.size();
  std::size_t count = 0;
  for (const char* at = search.FindIn(text.data(), end); at != nullptr;
       at = search.FindIn(at + search.Size(), end)) {
    ++count;
  }
  return count;
}

// Writes [read, end) to `write`, somewhere before `read` in the same buffer, with every `search` replaced,
// and returns where the result ends. The caller has left room enough for what is written never to overtake
// what is read.
char* Rewrite(char* write, const char* read, const char* end, const Pattern& search,
              std::string_view replacement, std::size_t& count) {
  const auto keep = [&write](const char* from, const char* to) {
    const auto length = static_cast<std::size_t>(to - from);
    if (write != from) std::memmove(write, from, length);
    write += length;
  };
  while (const char* const match = search.FindIn(read, end)) {
    keep(read, match);
    write = CopyTo(write, replacement);
    read = match + search.Size();
    ++count;
  }
  keep(read, end);
  return write;
}

std::int32_t Replace(std::string& text, const Pattern& search, std::string_view replacement) {
  const std::size_t length = text.size();
  std::size_t gap = 0;
  if (replacement.size() > search.Size()) {
    // It grows: once, to its final size. The text moves to the end of that and is then rewritten from the
    // start.
    const std::size_t matches = CountOf(text, search);
    const std::size_t growth = replacement.size() - search.Size();
    if (matches == 0) return 0;
    if (matches > (text.max_size() - length) / growth) throw std::length_error("ReplaceStr");
    gap = matches * growth;
    text.resize(length + gap);
    std::memmove(text.data() + gap, text.data(), length);
  }
  std::size_t count = 0;
  char* const start = text.data();
  const char* const end = Rewrite(start, start + gap, start + gap + length, search, replacement, count);
  text.resize(static_cast<std::size_t>(end - start));
  return static_cast<std::int32_t>(count);
}

// How many bytes of `text` are `byte`. The inner count fits a byte and has a fixed length, which compilers
// turn into vector instructions several times as fast as those for a wider one.
std::size_t CountOf(std::string_view text, char byte) {
  constexpr std::size_t kBlock = 64;
  std::size_t count = 0;
  for (; text.size() >= kBlock; text.remove_prefix(kBlock)) {
    unsigned char here = 0;
    for (std::size_t i = 0; i < kBlock; ++i) here = static_cast<unsigned char>(here + (text[i] == byte));
    count += here;
  }
  return count + static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
}

// The first `byte` in [at, end), or `end`. Eight bytes at a time: std::memchr is faster in long fields only,
// and most are shorter than what it costs to call.
const char* FindByte(const char* at, const char* end, char byte) {
  constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
  const std::uint64_t wanted = kOnes * static_cast<unsigned char>(byte);
  std::uint64_t eight;
  for (; end - at >= static_cast<std::ptrdiff_t>(sizeof eight); at += sizeof eight) {
    std::memcpy(&eight, at, sizeof eight);
    eight ^= wanted;
    if (((eight - kOnes) & ~eight & (kOnes << 7)) != 0) break;  // one of them is zero
  }
  return std::find(at, end, byte);
}

// Room for that many more, so that none is moved while they are appended; twice the room at least when there
// must be more, so that many small calls stay linear.
void MakeRoom(std::vector<std::string>& fields, std::size_t more) {
  if (fields.capacity() - fields.size() >= more) return;
  fields.reserve(std::max(fields.size() + more, 2 * fields.capacity()));
}

// Appends [start, stop), of a text that goes on to `end`. Most fields are short. For those, a fixed number of
// bytes is copied, which takes two instructions in place of a call, and then cut.
void AppendField(std::vector<std::string>& fields, const char* start, const char* stop, const char* end) {
  constexpr std::ptrdiff_t kShort = 15;  // what strings of common libraries hold without a block
  if (stop - start <= kShort && end - start >= kShort) {
    fields.emplace_back(start, kShort).resize(static_cast<std::size_t>(stop - start));
  } else {
    fields.emplace_back(start, stop);
  }
}

// A set of bytes, to be asked once for every byte of a text.
class ByteSet {
 public:
  explicit ByteSet(const char* bytes) {
    for (; *bytes != '\0'; ++bytes) holds_[static_cast<unsigned char>(*bytes)] = true;
  }
  bool Holds(char byte) const { return holds_[static_cast<unsigned char>(byte)]; }

 private:
  bool holds_[256] = {};
};

// How many longest runs of other bytes there are in `text`. Without branches, since nothing foretells them.
std::size_t CountPieces(std::string_view text, const ByteSet& delimiters) {
  std::size_t pieces = 0;
  bool between = true;
  for (const char byte : text) {
    const bool delimiter = delimiters.Holds(byte);
    pieces += static_cast<std::size_t>(between & !delimiter);
    between = delimiter;
  }
  return pieces;
}

}  // namespace

char* Utils::ConcatStr(const char* first, const char* second) {
  const std::string_view head = TextOrEmpty(first);
  const std::string_view tail = TextOrEmpty(second);
  if (head.size() > kLongestJoin || tail.size() > kLongestJoin - head.size()) return nullptr;
  char* const joined = NewText(head.size() + tail.size());
  if (joined != nullptr) CopyTo(CopyTo(joined, head), tail);
  return joined;
}

char* Utils::ReplaceChar(const char* text, char write, char find) {
  if (text == nullptr) return nullptr;
  const std::string_view source = text;
  char* const copy = NewText(source.size());
  if (copy == nullptr) return nullptr;
  std::replace_copy(source.begin(), source.end(), copy, find, write);
  return copy;
}

std::int32_t Utils::ReplaceStr(std::string& text, const char* search, const char* replacement) {
  search = TextOrEmpty(search);
  replacement = TextOrEmpty(replacement);
  if (*search == '\0') return 0;
  if (PointsInto(text, search) || PointsInto(text, replacement)) {
    const std::string search_copy = search;
    return Replace(text, Pattern(search_copy), std::string(replacement));
  }
  return Replace(text, Pattern(search), replacement);
}

char* Utils::DeleteDelims(const char* text, const char* delimiters, const char* joiner) {
  if (text == nullptr) return nullptr;
  delimiters = TextOrEmpty(delimiters);
  const ByteSet delimiter_set(delimiters);
  const std::string_view source = text;
  const std::string_view between = TextOrEmpty(joiner);

  // A joiner of one byte takes the place of a delimiter, so the text's own length is enough for it.
  std::size_t room = source.size();
  if (between.size() > 1) {
    const std::size_t pieces = CountPieces(source, delimiter_set);
    if (pieces > (PTRDIFF_MAX - room) / between.size()) return nullptr;
    room += pieces * between.size();
  }
  std::unique_ptr<char, FreeBlock> result(NewText(room));
  if (result == nullptr) return nullptr;

  char* write = result.get();
  const char* const end = source.data() + source.size();
  for (const char* at = source.data(); at != end;) {
    if (delimiter_set.Holds(*at)) {
      ++at;
      continue;
    }
    if (write != result.get()) write = CopyTo(write, between);
    const char* const near = at + std::min(kNear, end - at);
    while (at != near && !delimiter_set.Holds(*at)) *write++ = *at++;
    if (at != near) continue;
    const std::string_view rest(at, std::strcspn(at, delimiters));
    write = CopyTo(write, rest);
    at += rest.size();
  }
  if (write == result.get()) return nullptr;
  *write++ = '\0';
  auto* const fitted =
      static_cast<char*>(std::realloc(result.get(), static_cast<std::size_t>(write - result.get())));
  if (fitted != nullptr) static_cast<void>(result.release());
  return fitted;
}

void Utils::SplitWithFlag(const char* text, char separator, std::vector<std::string>& fields) {
  text = TextOrEmpty(text);
  // A short text that is itself one of the fields moves when they do.
  const std::string_view storage(reinterpret_cast<const char*>(fields.data()),
                                 fields.size() * sizeof(std::string));
  const std::string own = PointsInto(storage, text) ? text : "";
  const std::string_view source = own.empty() ? text : own.c_str();
  const char* const end = source.data() + source.size();
  MakeRoom(fields, CountOf(source, separator) + 1);
  for (const char* start = source.data(); start != end;) {
    const char* const stop = FindByte(start, end, separator);
    AppendField(fields, start, stop, end);
    start = stop != end ? stop + 1 : end;
  }
}

const void* Utils::MemMem(const void* range, unsigned long range_length, const void* pattern,
                          unsigned long pattern_length) {
  if (pattern_length == 0 || pattern_length > range_length) return nullptr;
  const auto* const start = static_cast<const char*>(range);
  return Pattern({static_cast<const char*>(pattern), pattern_length}).FindIn(start, start + range_length);
}
