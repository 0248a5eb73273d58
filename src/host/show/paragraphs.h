#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// Text in paragraphs behind their headings, which stand in a column of their own at the left.
class Paragraphs {
 public:
  Paragraphs(std::size_t width, bool colour) : width_(width), colour_(colour) {}

  /// Adds lines under one heading; each is folded, and may hold anything.
  void Add(const std::string& heading, const std::vector<std::string>& lines);

  void AddBlank() { text_ += "\n"; }

  [[nodiscard]] const std::string& Text() const { return text_; }

 private:
  std::size_t width_;
  bool colour_;
  std::string text_;
};

}  // namespace corvo::telemetry::host
