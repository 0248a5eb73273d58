#pragma once

#include <gtest/gtest.h>

#include <ctime>
#include <ostream>

namespace corvo::test {

/// 2024-05-01T12:30:00, a Wednesday.
inline std::tm SomeTime() {
  std::tm time{};
  time.tm_year = 124;
  time.tm_mon = 4;
  time.tm_mday = 1;
  time.tm_hour = 12;
  time.tm_min = 30;
  time.tm_wday = 3;
  time.tm_yday = 121;
  return time;
}

/// A field of that time with another value, and the text of the result.
struct FieldCase {
  const char* name;
  int std::tm::*field;
  int value;
  const char* text;  // empty for a value out of range

  friend void PrintTo(const FieldCase& field_case, std::ostream* stream) {
    *stream << field_case.name << ' ' << field_case.value;
  }
};

class FormatUtcTimeField : public testing::TestWithParam<FieldCase> {};

}  // namespace corvo::test
