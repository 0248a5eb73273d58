#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace corvo::test {

// The same regular expressions on every platform: GoogleTest's own know no brackets on Windows.

MATCHER_P(MatchesPattern, pattern, "matches the regular expression " + std::string(pattern)) {
  return std::regex_match(std::string(arg), std::regex(pattern));
}

MATCHER_P(ContainsPattern, pattern, "contains a match of the regular expression " + std::string(pattern)) {
  return std::regex_search(std::string(arg), std::regex(pattern));
}

}  // namespace corvo::test
