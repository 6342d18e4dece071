#include "common/utils/pattern_limits.h"

#include <algorithm>
#include <regex>
#include <utility>
#include <vector>

namespace {

constexpr std::uint64_t kMany = 1'000'000;  // "no bound", and where sums stop growing
constexpr std::uint64_t kLargest = 4'000'000;

enum class Kind {
  kCharacter,  // whatever stands for one character: itself, a class, a bracket expression
  kAssertion,
  kBackReference,
  kOpenGroup,
  kOpenLookAhead,
  kClose,
  kOr,
  kRepeat,
  kEnd,  // of the pattern, or of its valid part
};

struct Item {
  Kind kind;
  std::uint64_t least = 0;  // of a repetition
  std::uint64_t most = 0;
};

// Cuts a pattern into its items, where libstdc++ does.
class PatternReader {
 public:
  explicit PatternReader(std::string_view pattern) : pattern_(pattern) {}

  Item Next() {
    item_start_ = at_;
    if (at_ == pattern_.size()) return {Kind::kEnd};
    switch (pattern_[at_++]) {
      case '^':
      case '$':
        return {Kind::kAssertion};
      case '|':
        return {Kind::kOr};
      case ')':
        return {Kind::kClose};
      case '*':
        return Repeat(0, kMany);
      case '+':
        return Repeat(1, kMany);
      case '?':
        return Repeat(0, 1);
      case '(':
        return Group();
      case '[':
        return Bracket();
      case '{':
        return Braces();
      case '\\':
        return Escape();
      default:
        return {Kind::kCharacter};
    }
  }

  // The text of the last item; from the last item to the end.
  std::string_view ItemText() const { return pattern_.substr(item_start_, at_ - item_start_); }
  std::string_view Rest() const { return pattern_.substr(item_start_); }

 private:
  bool Take(char character) {
    if (at_ == pattern_.size() || pattern_[at_] != character) return false;
    ++at_;
    return true;
  }

  bool AtDigit() const { return at_ != pattern_.size() && pattern_[at_] >= '0' && pattern_[at_] <= '9'; }

  void Skip(std::size_t count) { at_ += std::min(count, pattern_.size() - at_); }

  std::uint64_t Number(std::regex_constants::error_type overflow) {
    constexpr std::uint64_t kLongest = 100'000'000'000'000'000;
    std::uint64_t value = 0;
    for (; AtDigit(); ++at_) {
      if (value >= kLongest) throw std::regex_error(overflow);
      value = value * 10 + static_cast<std::uint64_t>(pattern_[at_] - '0');
    }
    return std::min(value, kMany);
  }

  Item Repeat(std::uint64_t least, std::uint64_t most) {
    Take('?');
    return {Kind::kRepeat, least, most};
  }

  Item Braces() {
    if (!AtDigit()) return {Kind::kEnd};
    const std::uint64_t least = Number(std::regex_constants::error_space);
    std::uint64_t most = least;
    if (Take(',')) most = AtDigit() ? Number(std::regex_constants::error_space) : kMany;
    return Take('}') ? Repeat(least, most) : Item{Kind::kEnd};
  }

  Item Group() {
    if (!Take('?') || Take(':')) return {Kind::kOpenGroup};
    return {Take('=') || Take('!') ? Kind::kOpenLookAhead : Kind::kEnd};
  }

  Item Escape() {
    if (at_ == pattern_.size()) return {Kind::kEnd};
    if (AtDigit() && pattern_[at_] != '0') {
      Number(std::regex_constants::error_backref);
      return {Kind::kBackReference};
    }
    switch (pattern_[at_++]) {
      case 'b':
      case 'B':
        return {Kind::kAssertion};
      case 'c':
        if (at_ == pattern_.size()) return {Kind::kEnd};
        Skip(1);
        break;
      case 'x':
        Skip(2);
        break;
      case 'u':
        Skip(4);
        break;
      default:
        break;
    }
    return {Kind::kCharacter};
  }

  Item Bracket() {
    while (at_ != pattern_.size()) {
      const char character = pattern_[at_++];
      if (character == ']') return {Kind::kCharacter};
      if (character == '\\') {
        Take('c');  // and the character that it makes a control character
        Skip(1);
      } else if (character == '[' && !SkipClass()) {
        break;
      }
    }
    return {Kind::kEnd};
  }

  // Past the rest of [:name:], [.name.] or [=name=], if one of them stands here.
  bool SkipClass() {
    if (at_ == pattern_.size()) return false;
    const char mark = pattern_[at_];
    if (mark != ':' && mark != '.' && mark != '=') return true;
    const std::size_t end = pattern_.find(mark, at_ + 1);
    at_ = std::min(end, pattern_.size() - 1) + 1;
    return Take(']');
  }

  std::string_view pattern_;
  std::size_t at_ = 0;
  std::size_t item_start_ = 0;
};

std::uint64_t Product(std::uint64_t first, std::uint64_t second) {
  return std::min(first * second, kMany);
}

// One part of a pattern, or a whole group. `depth` bounds the calls made inside it without a character in
// between, wherever one comes in or goes out; `ways`, by how many ways; `size` is PatternDemands::size.
struct Term {
  std::uint64_t depth = 0;
  bool may_be_empty = true;
  enum { kAssertion, kCharacter, kOther } kind = kAssertion;  // an assertion cannot be repeated
  std::uint64_t ways = 1;
  std::uint64_t size = 1;
};

// The group whose inside is being read.
struct Level {
  bool is_look_ahead = false;
  std::uint64_t terms = 0;  // in the alternative being read
  std::uint64_t run = 0;    // calls since the last character
  std::uint64_t deepest_run = 0;
  std::uint64_t ways = 1;  // since the last character
  std::uint64_t most_ways = 1;
  std::uint64_t ways_of_alternatives = 0;
  std::uint64_t alternatives = 1;
  std::uint64_t size = 2;
  bool alternative_may_be_empty = true;
  bool may_be_empty = false;

  void Add(const Term& term) {
    ++terms;
    size = std::min(size + term.size, 2 * kLargest);
    run = std::min(run + term.depth, kMany);
    deepest_run = std::max(deepest_run, run);
    ways = Product(ways, term.ways);
    most_ways = std::max(most_ways, ways);
    if (term.may_be_empty) return;
    alternative_may_be_empty = false;
    run = term.depth;
    ways = term.ways;
  }

  void EndAlternative() {
    may_be_empty |= std::exchange(alternative_may_be_empty, true);
    terms = run = 0;
    ways_of_alternatives = std::min(ways_of_alternatives + std::exchange(most_ways, 1), kMany);
    ways = 1;
  }

  Term AsTerm() {
    EndAlternative();
    if (is_look_ahead)
      return {deepest_run + alternatives + 4, true, Term::kAssertion, ways_of_alternatives, size};
    return {deepest_run + alternatives, may_be_empty, Term::kOther, ways_of_alternatives, size};
  }
};

class DemandsReader {
 public:
  PatternDemands Read(std::string_view pattern) {
    PatternReader reader(pattern);
    for (;;) {
      const Item item = reader.Next();
      if (item.kind == Kind::kRepeat && has_term_ && term_.kind != Term::kAssertion) {
        Repeat(item);
        continue;
      }
      if (has_term_) level_.Add(term_);
      has_term_ = false;
      if (item.kind == Kind::kEnd || item.kind == Kind::kRepeat) break;
      if (item.kind == Kind::kClose && enclosing_.empty()) break;
      Read(item.kind, reader.ItemText().size());
      demands_.compile_depth = std::max(demands_.compile_depth, enclosing_depth_ + level_.terms);
    }
    while (!enclosing_.empty()) {  // a group that was not closed has been entered all the same
      Close();
      level_.Add(term_);
    }
    Close();
    demands_.match_depth = std::max(demands_.match_depth, term_.depth);
    demands_.unwatched_ways = term_.ways;
    demands_.size = term_.size;
    if (demands_.size > kLargest + pattern.size()) throw std::regex_error(std::regex_constants::error_space);
    return demands_;
  }

 private:
  static constexpr std::uint64_t kGroupDepth = 6;  // calls that compiling a group takes, in those of a term

  void Read(Kind kind, std::size_t length) {
    switch (kind) {
      case Kind::kOpenGroup:
      case Kind::kOpenLookAhead:
        Open(kind == Kind::kOpenLookAhead);
        return;
      case Kind::kClose:
        Close();
        return;
      case Kind::kOr:
        level_.EndAlternative();
        ++level_.alternatives;
        ++level_.size;
        return;
      case Kind::kCharacter:
        Take({0, false, Term::kCharacter, 1, length});
        return;
      case Kind::kBackReference:
        demands_.has_back_reference = true;
        Take({1, true, Term::kOther});
        return;
      default:
        ++demands_.steps;
        Take({1, true, Term::kAssertion});
    }
  }

  void Take(const Term& term) {
    term_ = term;
    has_term_ = true;
  }

  void Open(bool look_ahead) {
    demands_.has_look_ahead |= look_ahead;
    enclosing_depth_ += level_.terms + kGroupDepth;
    enclosing_.push_back(std::exchange(level_, {}));
    level_.is_look_ahead = look_ahead;
  }

  void Close() {
    Multiply(level_.alternatives);
    demands_.steps += level_.alternatives + 2;
    Take(level_.AsTerm());
    if (enclosing_.empty()) return;
    level_ = enclosing_.back();
    enclosing_.pop_back();
    enclosing_depth_ -= level_.terms + kGroupDepth;
  }

  void Repeat(const Item& item) {
    const bool is_character = term_.kind == Term::kCharacter;
    if (is_character && item.most == kMany) {
      ++demands_.loops;
    } else if (is_character || item.most <= 1) {
      Multiply(item.most - std::min(item.least, item.most) + 1);
    } else {
      demands_.repeats_groups = true;
    }
    ++demands_.steps;

    const std::uint64_t copies = std::max<std::uint64_t>(item.most == kMany ? item.least + 1 : item.most, 1);
    term_.size = std::min((term_.size + 1) * copies, 2 * kLargest);

    const std::uint64_t once = term_.depth + 1;
    if (!is_character && item.most > 1) {
      // The end of one round and the start of the next; as many rounds as there are when each may be empty.
      const std::uint64_t rounds = term_.may_be_empty ? copies + 1 : 2;
      term_.depth = std::min(once * rounds, kMany);
      const std::uint64_t ways_once = term_.ways + 1;
      term_.ways = 1;
      for (std::uint64_t round = 0; round < rounds && term_.ways < kMany; ++round) {
        term_.ways = Product(term_.ways, ways_once);
      }
    } else {
      term_.depth = once;
      if (item.least == 0) ++term_.ways;
    }
    term_.may_be_empty |= item.least == 0;
    term_.kind = Term::kOther;
  }

  void Multiply(std::uint64_t choices) { demands_.ways = Product(demands_.ways, choices); }

  PatternDemands demands_;
  Level level_;
  std::vector<Level> enclosing_;
  std::uint64_t enclosing_depth_ = 0;
  Term term_;
  bool has_term_ = false;
};

// Siblings, added one by one. Whenever enough stand beside each other they become one group, which is again
// a sibling of those before it.
class Siblings {
 public:
  // The newest reaches from `start` to the end of `text`.
  void Add(std::string& text, std::size_t start) {
    constexpr std::size_t kFew = 16;
    for (std::size_t height = 0;; ++height) {
      if (height == rows_.size()) rows_.emplace_back();
      Row& row = rows_[height];
      if (row.count++ == 0) row.start = start;
      if (row.count < kFew) return;
      text.insert(row.start, "(?:").push_back(')');
      start = row.start;
      row.count = 0;
    }
  }

 private:
  struct Row {
    std::size_t start = 0;
    std::size_t count = 0;
  };
  std::vector<Row> rows_;
};

struct OpenGroup {
  Siblings alternatives;
  std::size_t alternative_start;
  Siblings terms = {};
  std::size_t term_start = 0;
  bool has_term = false;
};

}  // namespace

PatternDemands DemandsOf(std::string_view pattern) {
  return DemandsReader().Read(pattern);
}

std::string BalancedPattern(std::string_view pattern) {
  std::string balanced;
  std::vector<OpenGroup> groups;
  groups.push_back({{}, 0});
  PatternReader reader(pattern);
  for (;;) {
    const Item item = reader.Next();
    OpenGroup& group = groups.back();
    if (item.kind != Kind::kRepeat && std::exchange(group.has_term, false)) {
      group.terms.Add(balanced, group.term_start);
    }
    if (item.kind == Kind::kEnd || (item.kind == Kind::kClose && groups.size() == 1)) {
      return balanced.append(reader.Rest());
    }
    if (item.kind == Kind::kOr) {
      group.alternatives.Add(balanced, group.alternative_start);
      group.alternative_start = balanced.size() + 1;
      group.terms = {};
    } else if (item.kind == Kind::kClose) {
      groups.pop_back();
      groups.back().has_term = true;
    } else if (item.kind != Kind::kRepeat) {
      group.term_start = balanced.size();
      group.has_term = true;
    }
    balanced += reader.ItemText();
    if (item.kind == Kind::kOpenGroup || item.kind == Kind::kOpenLookAhead) {
      group.has_term = false;
      groups.push_back({{}, balanced.size()});
    }
  }
}
