#include "sample_data.h"

#include <deque>
#include <iterator>
#include <random>
#include <utility>

const std::string& Kept(std::string text) {
  static std::deque<std::string> kept;
  return kept.emplace_back(std::move(text));
}

std::string RandomBytes(std::size_t size) {
  std::mt19937 random(1);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(1 + random() % 255);
  return bytes;
}

std::string EnglishText(std::size_t size) {
  static constexpr std::string_view kWords[] = {
      "the",  "of",     "and",     "to",     "a",      "in",       "that", "is",        "was",      "he",
      "for",  "it",     "with",    "as",     "his",    "on",       "be",   "at",        "by",       "had",
      "not",  "are",    "but",     "from",   "or",     "have",     "they", "which",     "one",      "you",
      "were", "device", "backup",  "folder", "reader", "stored",   "time", "message",   "there",    "would",
      "all",  "their",  "picture", "when",   "little", "together", "note", "different", "thousand", "house"};
  std::mt19937 random(2);
  std::string text;
  while (text.size() < size) {
    text += kWords[random() % std::size(kWords)];
    text += random() % 12 == 0 ? ". " : " ";
  }
  text.resize(size);
  return text;
}

std::string Repeated(std::string_view piece, std::size_t size) {
  std::string text;
  while (text.size() < size) text += piece;
  text.resize(size);
  return text;
}

std::string SizeName(std::size_t size) {
  if (size % kMiB == 0) return std::to_string(size / kMiB) + " MiB";
  if (size % kKiB == 0) return std::to_string(size / kKiB) + " KiB";
  return std::to_string(size) + " B";
}
