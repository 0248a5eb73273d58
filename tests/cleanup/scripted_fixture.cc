#include "cleanup/scripted_fixture.h"

#include <new>

namespace corvo::test {

using google::protobuf::Message;
using telemetry::common::Error;

Error Record(telemetry::common::ErrorCategory category, std::int64_t code, const std::string& what) {
  Error error;
  error.category = category;
  error.code = code;
  error.what = what;
  return error;
}

std::vector<Operation> Operations() {
  return {
      {"DeleteExpiredRows", [](const DataCleanup&, const Message* m) { return DataCleanup::DeleteExpiredRows(m, 1); }},
      {"GetRowCount",
       [](const DataCleanup&, const Message* m) {
         std::uint32_t count = 0;
         return DataCleanup::GetRowCount(m, count);
       }},
      {"TruncateRows", [](const DataCleanup&, const Message* m) { return DataCleanup::TruncateRows(m, 1); }},
      {"DeleteExtraRows", [](const DataCleanup& c, const Message* m) { return c.DeleteExtraRows(m, 1); }},
      {"Vacuum", [](const DataCleanup&, const Message* m) { return DataCleanup::Vacuum(m); }}};
}

std::vector<Thrown> ThrownThings() {
  return {
      {"BadAlloc", [] { throw std::bad_alloc(); }},
      {"Int", [] { throw 42; }},
      {"CString", [] { throw "text"; }},
      {"ErrorRecord", [] { throw Record(telemetry::common::EC_SEH, 5, "fault"); }},
      {"ErrorRecordOfAMissingTable", [] { throw Record(telemetry::common::EC_Custom, 1, "no such table: Samples"); }}};
}

}  // namespace corvo::test
