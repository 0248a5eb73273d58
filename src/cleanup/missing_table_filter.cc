#include "cleanup/missing_table_filter.h"

#include <algorithm>
#include <string>
#include <vector>

namespace corvo::telemetry::cleanup {

void ClearNoSuchTableError(common::Error& error) {
  static const std::vector<std::string> patterns = {"no such table:"};
  if (!error.Failed()) {
    return;
  }
  // As a C string: what follows a zero byte is not part of the message. An empty text matches nothing.
  const std::string text = error.what.c_str();
  const auto occurs = [&text](const std::string& pattern) { return text.find(pattern) != std::string::npos; };
  if (std::any_of(patterns.begin(), patterns.end(), occurs)) {
    error = common::Error();
  }
}

}  // namespace corvo::telemetry::cleanup
