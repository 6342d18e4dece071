// Runs every comparison, and generates the data that they share.

#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <random>

#include "bench.h"

std::string RandomBytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(1 + random() % 255);
  return bytes;
}

// Sentences of one paragraph, in random order.
std::string EnglishText(std::size_t size) {
  static constexpr std::string_view kSentences[] = {
      "The house at the end of the lane had been empty for longer than anyone could remember. ",
      "Every spring the garden grew wild, and the children of the village told stories about it. ",
      "One of them said that a clockmaker had lived there, who never finished his last device. ",
      "He worked at night, by the light of a single lamp, and spoke to nobody for weeks. ",
      "When the winter came he locked the door, put the key under a stone and walked away. ",
      "Nobody saw which way he went, for the snow had covered the road before morning. ",
      "Some people believe that the clock is still running, deep below the kitchen floor. ",
      "Others say they have heard it strike thirteen, but only when the wind is in the east. ",
      "My brother and I went to look for the key, and we found a great many stones. ",
      "Under the largest was a box, and in the box a letter that began with my own name. "};
  std::mt19937 random(2);
  std::string text;
  while (text.size() < size) text += kSentences[random() % std::size(kSentences)];
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
  return std::to_string(size) + " bytes";
}

const std::string& TemporaryFolder() {
  static std::string path = std::filesystem::temp_directory_path() / "hostutil-bench-XXXXXX";
  static const std::unique_ptr<char, void (*)(char*)> at_exit(
      ::mkdtemp(path.data()), [](char* folder) { std::filesystem::remove_all(folder); });
  return path;
}

int main(int argc, char** argv) {
  benchmark::AddCustomContext("compiler", __VERSION__);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
