#include "host/cli/words/wrong_usage.h"

#include <fmt/core.h>

#include <algorithm>
#include <numeric>

#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kLongestShown = 60;
constexpr std::size_t kFarthest = 2;

// How many letters must be put in, taken out or exchanged to make one text of the other.
std::size_t Distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t line = 1; line <= from.size(); ++line) {
    std::size_t diagonal = row[0];
    row[0] = line;
    for (std::size_t column = 1; column <= to.size(); ++column) {
      const std::size_t exchanged = diagonal + (from[line - 1] == to[column - 1] ? 0 : 1);
      diagonal = row[column];
      row[column] = std::min({row[column] + 1, row[column - 1] + 1, exchanged});
    }
  }
  return row[to.size()];
}

}  // namespace

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; });
  return text;
}

void WrongUsage(const std::string& text) { throw CommandFailure(kUsage, text + "; see --help"); }

std::string Shown(const std::string& word) {
  if (word.empty()) {
    return "\"\"";
  }
  if (word.size() <= kLongestShown) {
    return word;
  }
  std::size_t end = kLongestShown;
  while (end > 0 && (static_cast<unsigned char>(word[end]) & 0xc0U) == 0x80U) {
    --end;  // not within a UTF-8 sequence
  }
  return word.substr(0, end) + "...";
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates) {
  if (word.size() > kLongestShown) {
    return {};
  }
  // A word as short as the distance would be near to every short candidate.
  std::size_t nearest = std::min(kFarthest + 1, word.size());
  const std::string* meant = nullptr;
  for (const std::string& candidate : candidates) {
    const std::size_t distance = Distance(LowerCase(word), LowerCase(candidate));
    if (distance < nearest) {
      nearest = distance;
      meant = &candidate;
    }
  }
  return meant == nullptr ? "" : fmt::format(" (did you mean {}?)", *meant);
}

}  // namespace corvo::telemetry::host
