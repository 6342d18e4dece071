#include "common/xml_plist.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <system_error>

namespace {

// Zeros at the end do not count: they are what a file that shrank did not deliver.
bool HasNulInside(std::string_view bytes) {
  const std::size_t nul = bytes.find('\0');
  return nul != bytes.npos && bytes.find_first_not_of('\0', nul) != bytes.npos;
}

// Whether the bytes contain more than `max_depth` start tags of containers, in comments and texts too. Few
// lists do, and the others need no walk from tag to tag. Counts blocks without branches, which compilers
// vectorize, starting at a "<", since long texts and data have none.
bool MayNestTooDeep(std::string_view bytes, std::size_t max_depth) {
  constexpr std::size_t kBlock = 256;
  constexpr std::size_t kLookAhead = 2;
  constexpr std::size_t kShortestTag = 6;
  if (bytes.size() <= max_depth * kShortestTag) return false;
  const auto opens = [](const char* at) {
    return static_cast<unsigned char>((at[0] == '<') & ((at[1] == 'a') | ((at[1] == 'd') & (at[2] == 'i'))));
  };
  const char* at = bytes.data();
  const char* const end = at + bytes.size() - kLookAhead;
  std::size_t count = 0;
  while (count <= max_depth) {
    at = static_cast<const char*>(std::memchr(at, '<', static_cast<std::size_t>(end - at)));
    if (at == nullptr) break;
    if (static_cast<std::size_t>(end - at) < kBlock) {
      for (; at != end; ++at) count += opens(at);
      break;
    }
    unsigned char in_block = 0;
    for (std::size_t i = 0; i < kBlock; ++i) in_block = static_cast<unsigned char>(in_block + opens(at + i));
    count += in_block;
    at += kBlock;
  }
  return count > max_depth;
}

enum class Section { kText, kCdata };

// Visits a list tag by tag. Where libplist fails, this may fail or go on.
class Walk {
 public:
  explicit Walk(std::string_view bytes) : at_(bytes.data()), end_(at_ + bytes.size()) {}

  // Calls `on_text(section, bytes)` for each part of a string or key. False when containers nest deeper than
  // `max_depth`, when `on_text` returns false, or when libplist would reject what was reached.
  template <typename OnText>
  bool Run(std::size_t max_depth, OnText on_text) {
    std::size_t depth = 0;
    while (FindTag()) {
      if (*at_ == '?' || *at_ == '!') {
        if (!(*at_ == '?' ? SkipPastUnquoted("?>") : SkipDeclaration())) return false;
        continue;
      }
      Tag tag;
      if (!ReadTag(tag)) return false;
      switch (tag.kind) {
        case Kind::kOther:
          break;
        case Kind::kString:
          if (!tag.empty && !ReadText(on_text)) return false;
          if (depth == 0) return true;  // a root without children: libplist is done
          break;
        case Kind::kLeaf:
          if (depth == 0) return true;
          break;
        case Kind::kContainer:
          if (depth == max_depth) return false;
          // Up to 2.7, libplist makes what follows an empty root part of it.
          if (!tag.empty || depth == 0) ++depth;
          break;
        case Kind::kContainerEnd:
          if (depth <= 1) return true;  // the end of the root
          --depth;
          break;
        case Kind::kUnknown:
          return false;
      }
    }
    return true;
  }

 private:
  enum class Kind { kOther, kContainer, kContainerEnd, kString, kLeaf, kUnknown };

  struct Tag {
    Kind kind = Kind::kUnknown;
    bool empty = false;
  };

  static Kind KindOf(std::string_view name) {
    const bool end = name.starts_with('/');
    if (end) name.remove_prefix(1);
    if (name == "dict" || name == "array") return end ? Kind::kContainerEnd : Kind::kContainer;
    if (name == "key" || name == "string") return end ? Kind::kOther : Kind::kString;
    if (name == "integer" || name == "true" || name == "false" || name == "data" || name == "date" ||
        name == "real" || name == "null") {
      return end ? Kind::kOther : Kind::kLeaf;
    }
    return name == "plist" ? Kind::kOther : Kind::kUnknown;
  }

  static bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

  std::string_view Rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }

  bool SkipPrefix(std::string_view prefix) {
    if (!Rest().starts_with(prefix)) return false;
    at_ += prefix.size();
    return true;
  }

  // Moves past the next `text`. False, as in all of these, when there is none: libplist fails, too.
  bool SkipPast(std::string_view text) {
    const std::size_t found = Rest().find(text);
    if (found == std::string_view::npos) return false;
    at_ += found + text.size();
    return true;
  }

  // Moves to the next place outside double quotes where `stop` holds.
  template <typename Stop>
  bool FindUnquoted(Stop stop) {
    for (; at_ != end_ && !stop(); ++at_) {
      if (*at_ != '"') continue;
      ++at_;
      if (!SkipPast("\"")) return false;
      --at_;
    }
    return at_ != end_;
  }

  bool SkipPastUnquoted(std::string_view text) {
    if (!FindUnquoted([&] { return Rest().starts_with(text); })) return false;
    at_ += text.size();
    return true;
  }

  // Moves past the next "<", unless that is the last byte.
  bool FindTag() {
    const auto* const found = static_cast<const char*>(std::memchr(at_, '<', Rest().size()));
    if (found == nullptr || found + 1 == end_) return false;
    at_ = found + 1;
    return true;
  }

  bool SkipDeclaration() {
    if (SkipPrefix("!--")) return SkipPast("-->");
    if (SkipPrefix("![CDATA[")) return SkipPast("]]>");
    if (!SkipPrefix("!DOCTYPE")) return false;
    if (!FindUnquoted([&] { return *at_ == '[' || *at_ == '>'; })) return false;
    return *at_ == '>' || SkipPastUnquoted("]>");
  }

  // Reads a tag up to its ">".
  bool ReadTag(Tag& tag) {
    const char* const start = at_;
    // Each byte that ends a name is at most ">", and each letter is greater.
    while (at_ != end_ && (*at_ > '>' || (*at_ != '>' && *at_ != '<' && !IsSpace(*at_)))) ++at_;
    std::string_view name(start, static_cast<std::size_t>(at_ - start));
    if (!FindUnquoted([&] { return *at_ == '>' || *at_ == '<'; }) || *at_ == '<') return false;
    tag.empty = at_[-1] == '/';
    if (tag.empty && at_ == start + name.size()) name.remove_suffix(1);
    tag.kind = KindOf(name);
    return true;
  }

  // Reads the contents of a string or key, up to its end tag.
  template <typename OnText>
  bool ReadText(OnText on_text) {
    ++at_;  // the ">" of the start tag
    for (;;) {
      const char* start = at_;
      if (!FindTag()) return false;
      if (!on_text(Section::kText, std::string_view(start, static_cast<std::size_t>(at_ - 1 - start))))
        return false;
      if (*at_ == '/') return true;
      if (SkipPrefix("!--")) {
        if (!SkipPast("-->")) return false;
        continue;
      }
      if (!SkipPrefix("![CDATA[")) return false;
      start = at_;
      if (!SkipPast("]]>")) return false;
      if (!on_text(Section::kCdata, std::string_view(start, static_cast<std::size_t>(at_ - start))))
        return false;
    }
  }

  const char* at_;
  const char* end_;
};

// Decodes "&#65;" or "&#x41;" at the start of `text`: appends its UTF-8 to `utf8` and returns its length, or
// 0 for what libplist has to decide: any other entity, one that it rejects, markup, and surrogates, about
// which its releases differ.
std::size_t DecodeNumber(std::string_view text, char utf8[4], std::size_t& utf8_size) {
  constexpr std::size_t kLongest = 10;  // libplist rejects longer ones
  text = text.substr(0, kLongest);
  if (!text.starts_with("&#")) return 0;
  const bool hexadecimal = text.starts_with("&#x");
  const char* const end = text.data() + text.size();
  std::uint32_t value = 0;
  const auto [digits_end, error] =
      std::from_chars(text.data() + (hexadecimal ? 3 : 2), end, value, hexadecimal ? 16 : 10);
  if (error != std::errc() || digits_end == end || *digits_end != ';') return 0;
  if (value == 0 || value == '&' || value == '<' || value > 0x10FFFF || value >> 11 == 0xD800 >> 11) return 0;

  char* at = utf8;
  const auto append = [&at](std::uint32_t bits) { *at++ = static_cast<char>(bits); };
  if (value < 0x80) {
    append(value);
  } else if (value < 0x800) {
    append(0xC0 | value >> 6);
  } else if (value < 0x10000) {
    append(0xE0 | value >> 12);
  } else {
    append(0xF0 | value >> 18);
  }
  if (value >= 0x10000) append(0x80 | (value >> 12 & 0x3F));
  if (value >= 0x800) append(0x80 | (value >> 6 & 0x3F));
  if (value >= 0x80) append(0x80 | (value & 0x3F));
  utf8_size = static_cast<std::size_t>(at - utf8);
  return static_cast<std::size_t>(digits_end + 1 - text.data());
}

// Copies a list, with its long texts decoded into CDATA sections.
class TextDecoder {
 public:
  explicit TextDecoder(const char* from) : copied_(from) {}

  void Decode(std::string_view text) {
    if (text.size() < kFewMoves) return;
    Append({copied_, static_cast<std::size_t>(text.data() - copied_)});
    copied_ = text.data() + text.size();
    keep_entities_until_ = 0;
    while (!text.empty()) {
      const std::size_t start = text.front() == '&' ? 0 : std::min(text.find('&'), text.size());
      AppendText(text.substr(0, start));
      text.remove_prefix(start);
      if (!text.empty()) text.remove_prefix(AppendEntity(text));
    }
    CloseSection();
  }

  XmlPlist::Copy Finish(const char* end) {
    Append({copied_, static_cast<std::size_t>(end - copied_)});
    constexpr char kNul = 0;
    Append({&kNul, 1});
    if (failed_ || size_ > std::numeric_limits<std::uint32_t>::max()) return {};
    return {std::move(bytes_), size_ - 1};
  }

 private:
  // Entities are kept in texts up to this length, and this far after a CDATA section: otherwise a text full
  // of "]]>" would get a section for each entity, and a section costs libplist two allocations.
  static constexpr std::size_t kFewMoves = 256;

  // Appends the entity at the start of `text` and returns its length.
  std::size_t AppendEntity(std::string_view text) {
    if (text.starts_with("&amp;")) return AppendMarkup("&", "&amp;");
    if (text.starts_with("&lt;")) return AppendMarkup("<", "&lt;");
    if (text.starts_with("&gt;")) return AppendText(">"), 4;
    if (text.starts_with("&quot;")) return Append("\""), 6;
    if (text.starts_with("&apos;")) return Append("'"), 6;
    char utf8[4];
    std::size_t utf8_size = 0;
    if (const std::size_t size = DecodeNumber(text, utf8, utf8_size); size != 0)
      return AppendText({utf8, utf8_size}), size;
    // Left to libplist, which rejects the rest or, up to 2.7, looks only at how it begins.
    const std::size_t size = std::min(text.find(';'), text.size() - 1) + 1;
    CloseSection();
    Append(text.substr(0, size));
    if (size_ >= keep_entities_until_ && size < text.size()) OpenSection();
    return size;
  }

  std::size_t AppendMarkup(std::string_view character, std::string_view entity) {
    if (!in_section_ && size_ < keep_entities_until_) return Append(entity), entity.size();
    OpenSection();
    Append(character);
    return entity.size();
  }

  // Appends decoded text without "&" and "<". A section must not contain "]]>".
  void AppendText(std::string_view text) {
    while (in_section_) {
      const std::size_t end = text.find('>');
      if (end == text.npos) break;
      Append(text.substr(0, end));
      text.remove_prefix(end);
      if (std::string_view(bytes_.get(), size_).ends_with("]]")) {
        CloseSection();
      } else {
        Append(">");
        text.remove_prefix(1);
      }
    }
    Append(text);
  }

  void OpenSection() {
    if (!in_section_) Append("<![CDATA[");
    in_section_ = true;
  }

  void CloseSection() {
    if (!in_section_) return;
    Append("]]>");
    in_section_ = false;
    keep_entities_until_ = size_ + kFewMoves;
  }

  void Append(std::string_view bytes) {
    if (bytes.size() >= capacity_ - size_ && !Grow(bytes.size())) return;
    std::memcpy(bytes_.get() + size_, bytes.data(), bytes.size());
    size_ += bytes.size();
  }

  bool Grow(std::size_t by) {
    const std::size_t capacity = 2 * capacity_ + by + 1;
    auto* const grown = static_cast<char*>(failed_ ? nullptr : std::realloc(bytes_.get(), capacity));
    if (grown == nullptr) return !(failed_ = true);
    static_cast<void>(bytes_.release());
    bytes_.reset(grown);
    capacity_ = capacity;
    return true;
  }

  const char* copied_;  // up to here
  Owners::Block bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  bool in_section_ = false;
  std::size_t keep_entities_until_ = 0;
  bool failed_ = false;  // to allocate
};

}  // namespace

bool XmlPlist::IsSafe(const char* data, std::size_t length, std::size_t max_depth) {
  const std::string_view bytes(data, length);
  if (HasNulInside(bytes)) {
    return Walk(bytes).Run(max_depth,
                           [](Section, std::string_view text) { return text.find('\0') == text.npos; });
  }
  if (!MayNestTooDeep(bytes, max_depth)) return true;
  return Walk(bytes).Run(max_depth, [](Section, std::string_view) { return true; });
}

bool XmlPlist::HasSlowTexts(const char* data, std::size_t length) {
  // Moving a byte costs libplist less than a tenth of parsing it: up to eight moves for each byte of the list
  // at most double the time.
  constexpr std::uint64_t kMovesPerByte = 8;
  const std::uint64_t budget = kMovesPerByte * length;
  const std::string_view bytes(data, length);
  std::uint64_t moves = 0;
  std::size_t text_end = 0;  // of the text around `entity`: the next "<"
  for (std::size_t entity = bytes.find('&'); entity != bytes.npos; entity = bytes.find('&', entity + 1)) {
    if (entity >= text_end) text_end = std::min(bytes.find('<', entity), length);
    moves += text_end - entity;
    if (moves > budget) return true;
  }
  return false;
}

XmlPlist::Copy XmlPlist::DecodeSlowTexts(const char* data, std::size_t length) {
  TextDecoder decoder(data);
  Walk({data, length}).Run(length, [&](Section section, std::string_view text) {
    if (section == Section::kText) decoder.Decode(text);
    return true;
  });
  return decoder.Finish(data + length);
}
