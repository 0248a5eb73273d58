#pragma once

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>

#include "common/error.h"

namespace corvo::test {

/// Something to throw, and the text that the record made of it contains.
struct Thrown {
  const char* name;
  void (*raise)();
  const char* json;

  friend void PrintTo(const Thrown& value, std::ostream* stream) { *stream << value.name; }
};

struct CustomStruct {};

inline const Thrown kThrown[] = {
    {"std::exception", [] { throw std::runtime_error("broken"); }, R"("what":"broken")"},
    {"std::bad_alloc", [] { throw std::bad_alloc(); }, R"("type":"std::bad_alloc")"},
    {"int", [] { throw 7; }, R"("code":7)"},
    {"C string", [] { throw "broken"; }, R"("what":"broken")"},
    {"string", [] { throw std::string("broken"); }, R"("what":"broken")"},
    {"struct", [] { throw CustomStruct{}; }, R"("what":"Unknown exception type.")"},
    {"Error", [] { throw telemetry::common::Error(std::runtime_error("broken")); },
     R"("what":"Unknown exception type.")"},
};

}  // namespace corvo::test
