#include "common/utils/text.h"

#include <string.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "common/owners.h"
#include "common/text_or_empty.h"

namespace {

constexpr std::size_t kLongestJoin = 2'147'483'646;

char* NewText(std::size_t length) {
  auto* const text = static_cast<char*>(std::malloc(length + 1));
  if (text != nullptr) text[length] = '\0';
  return text;
}

char* CopyTo(char* write, std::string_view text) {
  std::memcpy(write, text.data(), text.size());
  return write + text.size();
}

// A pattern to search for, perhaps many times in one text. There are three methods, in this order:
//   kFirstByte  memchr for the pattern's first byte: the fastest where that byte is rare
//   kBlocks     compares two or three bytes of the pattern at every place of a block: where it is frequent
//   kMemMem     the platform's memmem, which takes linear time (glibc, musl): where even that gives many
//               false matches, as a periodic text does
// Each byte passed is a credit, each false match a cost: the time in which the next method passes so many
// bytes. Out of credit, the search changes to that method.
class SearchPattern {
 public:
  // REQUIRES: `text` is not empty.
  explicit SearchPattern(std::string_view text) : text_(text) {}

  std::size_t Size() const { return text_.size(); }

  // Stays with the method that reads nothing after the first match.
  void NeverReadAhead() { credit_ = kUnlimited; }

  // The first match in [at, end), or null.
  const char* FindIn(const char* at, const char* end) {
    const auto length = static_cast<std::size_t>(end - at);
    if (length < text_.size()) return nullptr;
    if (text_.size() == 1) return static_cast<const char*>(std::memchr(at, text_.front(), length));
    const char* const stop = end - text_.size() + 1;
    while (at != stop) {
      const auto places = static_cast<std::size_t>(stop - at);
      const char* const place = method_ == Method::kFirstByte
                                    ? static_cast<const char*>(std::memchr(at, text_.front(), places))
                                    : NextCandidate(at, stop);
      if (place == nullptr) return nullptr;
      credit_ += place - at;
      if (place[probe_] == text_[probe_]) {
        if (std::memcmp(place, text_.data(), text_.size()) == 0) return place;
        credit_ -= static_cast<std::ptrdiff_t>(text_.size());
      }
      credit_ -= method_ == Method::kFirstByte ? kFirstByteCost : kBlocksCost;
      if (credit_ < 0) ChangeMethod();
      at = place + 1;
    }
    return nullptr;
  }

 private:
  enum class Method { kFirstByte, kBlocks, kMemMem };
  static constexpr std::ptrdiff_t kFirstByteCost = 160;
  static constexpr std::ptrdiff_t kBlocksCost = 32;
  // At the start, credit for so many false matches: a frequent letter comes six times in 64 bytes of English.
  static constexpr std::ptrdiff_t kFew = 6;
  static constexpr std::ptrdiff_t kUnlimited = PTRDIFF_MAX / 2;
  static constexpr std::ptrdiff_t kBlock = 256;
  static constexpr std::ptrdiff_t kPart = 16;

  // The first place in [at, stop) that may be a match, or null, by one of the later methods. Out of line, so
  // that the first one stays short: 2 of the 8 ns that a search of 64 bytes takes.
  [[gnu::noinline]] const char* NextCandidate(const char* at, const char* stop) const {
    if (method_ == Method::kBlocks) return FindInSteps<kBlock>(at, stop);
    const auto length = static_cast<std::size_t>(stop - at) + text_.size() - 1;
    return static_cast<const char*>(::memmem(at, length, text_.data(), text_.size()));
  }

  [[gnu::noinline]] void ChangeMethod() {
    method_ = method_ == Method::kFirstByte ? Method::kBlocks : Method::kMemMem;
    credit_ = method_ == Method::kBlocks ? kFew * kBlocksCost : kUnlimited;
    // Probe two different bytes if there are two: a run of one byte gives false matches.
    const std::size_t other = text_.find_last_not_of(text_.front());
    probe_ = other != std::string_view::npos ? other : text_.size() - 1;
  }

  // Whether one of the kStep places from `at` on may be a match. No branches, so that compilers vectorize the
  // loop. Two bytes reject most blocks; a third one rejects the places where common letters agree.
  template <std::ptrdiff_t kStep>
  bool MayBeginIn(const char* at) const {
    const std::size_t half = text_.size() / 2;
    unsigned char closest = 0xFF;  // zero where all bytes agree
    for (std::ptrdiff_t i = 0; i < kStep; ++i) {
      int difference = (at[i] ^ text_[0]) | ((at + probe_)[i] ^ text_[probe_]);
      if constexpr (kStep != kBlock) difference |= (at + half)[i] ^ text_[half];
      closest = std::min(closest, static_cast<unsigned char>(difference));
    }
    return closest == 0;
  }

  // The first candidate in [at, stop): looks at kStep places at once, and at fewer where those may hold one.
  // The last step overlaps the one before.
  template <std::ptrdiff_t kStep>
  const char* FindInSteps(const char* at, const char* stop) const {
    constexpr std::ptrdiff_t kSmaller = kStep == kBlock ? kPart : 1;
    if (stop - at < kStep) return FindInSteps<kSmaller>(at, stop);
    for (;; at = std::min(at + kStep, stop - kStep)) {
      if (MayBeginIn<kStep>(at)) {
        if constexpr (kStep == 1) return at;
        if (const char* const found = FindInSteps<kSmaller>(at, at + kStep)) return found;
      }
      if (at == stop - kStep) return nullptr;
    }
  }

  std::string_view text_;
  std::size_t probe_ = 1;  // compared before the whole pattern is
  Method method_ = Method::kFirstByte;
  std::ptrdiff_t credit_ = kFew * kFirstByteCost;
};

bool PointsInto(std::string_view bytes, const char* pointer) {
  const std::less_equal<const char*> not_after;
  return not_after(bytes.data(), pointer) && not_after(pointer, bytes.data() + bytes.size());
}

std::int32_t Replace(std::string& text, SearchPattern search, std::string_view replacement) {
  const std::size_t length = text.size();
  std::size_t places[256];  // the first matches, which are not searched for twice
  std::size_t matches = 0;
  std::size_t gap = 0;
  if (replacement.size() > search.Size()) {
    // Grow once, to the final size, and move the text to the end: writing from the start then never overtakes
    // reading.
    const char* const end = text.data() + length;
    for (const char* read = text.data(); const char* const match = search.FindIn(read, end); ++matches) {
      if (matches < std::size(places)) places[matches] = static_cast<std::size_t>(match - text.data());
      read = match + search.Size();
    }
    const std::size_t growth = replacement.size() - search.Size();
    if (matches == 0) return 0;
    if (matches > (text.max_size() - length) / growth) throw std::length_error("ReplaceStr");
    gap = matches * growth;
    text.resize(length + gap);
    std::memmove(text.data() + gap, text.data(), length);
  }
  char* write = text.data();
  const char* const source = write + gap;
  const char* const end = source + length;
  const char* read = source;
  for (std::size_t count = 0;; ++count) {
    const char* match = nullptr;
    if (count < std::min(matches, std::size(places))) {
      match = source + places[count];
    } else if (gap == 0 || count < matches) {
      match = search.FindIn(read, end);
    }
    const auto kept = static_cast<std::size_t>((match != nullptr ? match : end) - read);
    if (write != read) std::memmove(write, read, kept);
    write += kept;
    if (match == nullptr) {
      text.resize(static_cast<std::size_t>(write - text.data()));
      return static_cast<std::int32_t>(count);
    }
    write = CopyTo(write, replacement);
    read = match + search.Size();
  }
}

// How many bytes of `text` are `byte`. Compilers vectorize an inner count that fits a byte several times
// better than a wide one.
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

// The first `byte` in [at, end), or `end`. Eight bytes at a time: most fields are too short for the cost of a
// call of memchr.
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

// Makes room for `more` fields: at once, so that no field moves twice, and for at least twice as many as
// before, so that many small calls take linear time.
void MakeRoom(std::vector<std::string>& fields, std::size_t more) {
  if (fields.capacity() - fields.size() >= more) return;
  fields.reserve(std::max(fields.size() + more, 2 * fields.capacity()));
}

// Appends [start, stop), part of a text up to `end`. Short fields are copied with a fixed length, which takes
// two instructions instead of a call, and then cut.
void AppendField(std::vector<std::string>& fields, const char* start, const char* stop, const char* end) {
  constexpr std::ptrdiff_t kShort = 15;  // fits a string without an allocation
  if (stop - start <= kShort && end - start >= kShort) {
    fields.emplace_back(start, kShort).resize(static_cast<std::size_t>(stop - start));
  } else {
    fields.emplace_back(start, stop);
  }
}

class ByteSet {
 public:
  explicit ByteSet(const char* bytes) {
    for (; *bytes != '\0'; ++bytes) holds_[static_cast<unsigned char>(*bytes)] = true;
  }
  bool Holds(char byte) const { return holds_[static_cast<unsigned char>(byte)]; }

 private:
  bool holds_[256] = {};
};

// The number of pieces between runs of delimiters. No branches, since they would be mispredicted.
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
  // Up to the first `find`, memchr and memcpy are twice as fast as a loop.
  const std::size_t kept = std::min(source.find(find), source.size());
  CopyTo(copy, source.substr(0, kept));
  std::replace_copy(source.begin() + kept, source.end(), copy + kept, find, write);
  return copy;
}

std::int32_t Utils::ReplaceStr(std::string& text, const char* search, const char* replacement) {
  search = TextOrEmpty(search);
  replacement = TextOrEmpty(replacement);
  if (*search == '\0') return 0;
  if (PointsInto(text, search) || PointsInto(text, replacement)) {
    const std::string search_copy = search;
    return Replace(text, SearchPattern(search_copy), std::string(replacement));
  }
  return Replace(text, SearchPattern(search), replacement);
}

char* Utils::DeleteDelims(const char* text, const char* delimiters, const char* joiner) {
  if (text == nullptr) return nullptr;
  delimiters = TextOrEmpty(delimiters);
  const ByteSet delimiter_set(delimiters);
  const std::string_view source = text;
  const std::string_view between = TextOrEmpty(joiner);

  // A joiner of one byte replaces at least one delimiter, so the text's own length is enough.
  std::size_t room = source.size();
  if (between.size() > 1) {
    const std::size_t pieces = CountPieces(source, delimiter_set);
    if (pieces > (PTRDIFF_MAX - room) / between.size()) return nullptr;
    room += pieces * between.size();
  }
  Owners::Block result(NewText(room));
  if (result == nullptr) return nullptr;

  char* write = result.get();
  const char* const end = source.data() + source.size();
  for (const char* at = source.data(); at != end;) {
    if (delimiter_set.Holds(*at)) {
      ++at;
      continue;
    }
    if (write != result.get()) write = CopyTo(write, between);
    // Within so many bytes, this loop is faster than a call of a vectorized search.
    constexpr std::ptrdiff_t kNear = 16;
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
  // A short text that is itself one of the fields moves with them.
  const std::string_view storage(reinterpret_cast<const char*>(fields.data()),
                                 fields.size() * sizeof(std::string));
  const std::string own = PointsInto(storage, text) ? text : "";
  const std::string_view source = own.empty() ? text : own.c_str();
  const char* const end = source.data() + source.size();
  const bool ends_in_field = !source.empty() && source.back() != separator;
  MakeRoom(fields, CountOf(source, separator) + (ends_in_field ? 1 : 0));
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
  SearchPattern search({static_cast<const char*>(pattern), pattern_length});
  if (range_length <= PTRDIFF_MAX) return search.FindIn(start, start + range_length);
  // No buffer is that long: the caller knows that there is a match.
  search.NeverReadAhead();
  return search.FindIn(start, start + PTRDIFF_MAX);
}
