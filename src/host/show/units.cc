#include "host/show/units.h"

#include <fmt/core.h>

#include <array>

namespace corvo::telemetry::host {
namespace {

constexpr char32_t kNoCharacter = 0xffffffff;

struct Character {
  char32_t code;
  std::size_t length;  ///< in bytes
};

constexpr bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; }

// Length and payload of a sequence by its first byte. Sequences of two bytes begin at 0xc2: what 0xc0 and 0xc1 begin
// has a shorter form.
Character FromFirstByte(unsigned char byte) {
  if (byte < 0x80) {
    return {byte, 1};
  }
  if (byte >= 0xc2 && byte < 0xe0) {
    return {static_cast<char32_t>(byte & 0x1f), 2};
  }
  if (byte >= 0xe0 && byte < 0xf0) {
    return {static_cast<char32_t>(byte & 0x0f), 3};
  }
  return byte >= 0xf0 && byte < 0xf5 ? Character{static_cast<char32_t>(byte & 0x07), 4} : Character{kNoCharacter, 1};
}

bool IsValid(const Character& character) {
  constexpr std::array<char32_t, 5> kLeastOfLength = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character.code >= 0xd800 && character.code < 0xe000;
  return character.code >= kLeastOfLength.at(character.length) && character.code <= 0x10ffff && !surrogate;
}

/// The first character of the text, or its first byte alone when that begins none.
Character FirstOf(std::string_view text) {
  Character character = FromFirstByte(static_cast<unsigned char>(text.front()));
  for (std::size_t index = 1; index < character.length; ++index) {
    if (index >= text.size() || !IsContinuation(text[index])) {
      return {kNoCharacter, 1};
    }
    character.code = (character.code << 6) | (static_cast<unsigned char>(text[index]) & 0x3f);
  }
  return IsValid(character) ? character : Character{kNoCharacter, 1};
}

// Marks, embeddings, overrides and isolates: they show a text in another order than it is stored.
bool TurnsDirection(char32_t code) {
  return code == 0x061c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
         (code >= 0x2066 && code <= 0x2069);
}

bool IsHarmless(char32_t code) {
  const bool control = code < 0x20 || (code >= 0x7f && code < 0xa0);
  const bool separates_lines = code == 0x2028 || code == 0x2029;
  return code != kNoCharacter && !control && !separates_lines && !TurnsDirection(code);
}

std::string Escape(char32_t code, std::string_view bytes) {
  if (code == U'\n' || code == U'\t') {
    return code == U'\n' ? "\\n" : "\\t";
  }
  return bytes.size() == 1 ? fmt::format("\\x{:02x}", static_cast<unsigned char>(bytes.front()))
                           : fmt::format("\\u{:04x}", static_cast<std::uint32_t>(code));
}

}  // namespace

std::string WithSeparators(std::int64_t number) {
  std::string text = std::to_string(number);
  const std::size_t first_digit = number < 0 ? 1 : 0;
  for (std::size_t end = text.size(); end > first_digit + 3;) {
    end -= 3;
    text.insert(end, 1, ',');
  }
  return text;
}

std::string HumanBytes(std::int64_t bytes) {
  constexpr std::array kUnits = {"kB", "MB", "GB", "TB"};
  if (bytes < 1000 && bytes > -1000) {
    return fmt::format("{} B", bytes);
  }
  double value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  // 999.95 would be written as 1000.0.
  while ((value >= 999.95 || value <= -999.95) && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  return fmt::format("{:.1f} {}", value, kUnits.at(unit));
}

std::string Printable(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    const Character character = FirstOf(text);
    const std::string_view bytes = text.substr(0, character.length);
    printable += IsHarmless(character.code) ? std::string(bytes) : Escape(character.code, bytes);
    text.remove_prefix(character.length);
  }
  return printable;
}

std::string EscapedInJson(std::string_view document) {
  std::string escaped;
  escaped.reserve(document.size());
  while (!document.empty()) {
    const Character character = FirstOf(document);
    // Those that JSON itself escapes within texts: outside they are its line feeds.
    const bool lays_out = character.code < 0x20;
    if (lays_out || IsHarmless(character.code)) {
      escaped += document.substr(0, character.length);
    } else {
      escaped += fmt::format("\\u{:04x}", static_cast<std::uint32_t>(character.code));
    }
    document.remove_prefix(character.length);
  }
  return escaped;
}

std::string Counted(std::int64_t number, const std::string& noun) {
  return fmt::format("{} {}{}", WithSeparators(number), noun, number == 1 ? "" : "s");
}

}  // namespace corvo::telemetry::host
