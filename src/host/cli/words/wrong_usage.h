#pragma once

#include <string>
#include <vector>

namespace corvo::telemetry::host {

// How a wrong command line is answered: with what is wrong, what was probably meant, and where to read on.

/// Ends the command with `kUsage`.
///
/// @param text what is wrong, without a full stop.
/// @throws CommandFailure always.
[[noreturn]] void WrongUsage(const std::string& text);

/// A word of the command line as part of a sentence: an empty one is quoted, a long one is cut.
[[nodiscard]] std::string Shown(const std::string& word);

/// The text with the letters of ASCII in lower case: words are told apart without their case.
[[nodiscard]] std::string LowerCase(std::string text);

/// " (did you mean run?)" when one of the candidates is at most two letters from the word, whatever their case; else
/// nothing.
[[nodiscard]] std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace corvo::telemetry::host
