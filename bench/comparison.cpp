#include "comparison.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iostream>

std::string Describe(const std::string& text) {
  return text;
}

std::string Describe(const Text& text) {
  return text != nullptr ? std::string(text.get()) : "null";
}

std::string Describe(const void* place) {
  return std::to_string(reinterpret_cast<std::uintptr_t>(place));
}

std::string Describe(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += std::to_string(text.size()) + ':' + text;
  return all;
}

std::string Describe(const std::pair<std::string, std::string>& texts) {
  return texts.first + " to " + texts.second;
}

std::string Shape(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char byte) { return std::isalnum(byte) != 0; }, 'x');
  return text;
}

std::string Comparison::BenchmarkName(const Contender& contender) const {
  return function_ + "/" + data_ + "/" + contender.name;
}

bool Comparison::AnswersAgree() {
  std::call_once(checked_, [this] {
    const std::string ours = contenders_.front().answer();
    agree_ = std::all_of(contenders_.begin(), contenders_.end(), [&](const Contender& contender) {
      const std::string answer = contender.answer();
      if (answer == ours) return true;
      std::cerr << BenchmarkName(contender) << " answers\n  " << answer.substr(0, 200) << "\ninstead of\n  "
                << ours.substr(0, 200) << '\n';
      return false;
    });
  });
  return agree_;
}

void Comparison::Register() {
  for (const Contender& contender : contenders_) {
    const auto run = [this, &contender](benchmark::State& state) {
      if (!AnswersAgree()) {
        state.SkipWithError("the answers differ");
        return;
      }
      contender.run(state);
    };
    benchmark::RegisterBenchmark(BenchmarkName(contender).c_str(), run);
  }
}

std::deque<Comparison>& AllComparisons() {
  static std::deque<Comparison> all;
  return all;
}

Comparison& Compare(std::string function, std::string data, Goal goal) {
  return AllComparisons().emplace_back(std::move(function), std::move(data), goal);
}
