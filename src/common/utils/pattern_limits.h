// What a regular expression (ECMAScript) will ask of the engine, told from its text alone.
//
// Engines compile and match by recursion, on the caller's stack, as deep as the pattern demands. This look at
// the pattern comes first and is itself a loop.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct PatternDemands {
  // Calls, one inside the other: to compile the pattern (groups count as several), and to pass at most from
  // one character of the text to the next (alternatives, groups, repetitions and assertions in between).
  std::uint64_t compile_depth = 0;
  std::uint64_t match_depth = 0;

  bool has_back_reference = false;
  bool has_look_ahead = false;

  // The ways from one comparison of places in the text to the next, at most. There are several where an empty
  // alternative, or an optional part, leads to a reference to a group that took no part.
  std::uint64_t unwatched_ways = 1;

  // What it stands for when each repeated part is written out as often as it is counted: about the states of
  // the compiled pattern, and with each bracket expression's own length, which is copied along.
  std::uint64_t size = 0;

  // The ways a backtracking match can take through a text of some length, at most: `ways` * (length + 1) to
  // the power of `loops`. Without a bound when groups are repeated.
  bool repeats_groups = false;
  std::uint64_t ways = 1;
  std::uint64_t loops = 0;
  std::uint64_t steps = 0;  // everything in the pattern that is passed without a character, summed up

  // Half as deep with back-references: groups then have to be remembered, which costs calls of its own.
  bool FitsStack() const { return compile_depth <= 600 && match_depth <= (has_back_reference ? 128 : 256); }
};

// A part that is no valid pattern ends the look: the engine will not get past it either. Throws
// std::regex_error for a number so long that the engine's own arithmetic would overflow, and for a size of
// some millions, more than the pattern's own length.
PatternDemands DemandsOf(std::string_view pattern);

// The same pattern with long runs of terms, and long lists of alternatives, put into nested groups that
// capture nothing, so that neither makes the engine recurse deep. Invalid patterns stay invalid at the same
// place.
std::string BalancedPattern(std::string_view pattern);
