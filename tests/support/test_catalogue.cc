#include "support/test_catalogue.h"

#include "contracts/catalogue.h"

namespace corvo::test {
namespace {

const TestCatalogue* current = nullptr;

const std::vector<google::protobuf::Message*>& Read(std::vector<google::protobuf::Message*> TestCatalogue::*list) {
  static const std::vector<google::protobuf::Message*> none;
  if (current == nullptr) {
    return none;
  }
  current->on_reading();
  return current->*list;
}

}  // namespace

TestCatalogue::TestCatalogue() { current = this; }

TestCatalogue::~TestCatalogue() { current = nullptr; }

}  // namespace corvo::test

namespace corvo::telemetry::contracts {

const std::vector<google::protobuf::Message*>& ContractCatalogue() {
  return test::Read(&test::TestCatalogue::contracts);
}

const std::vector<google::protobuf::Message*>& DatabaseCatalogue() {
  return test::Read(&test::TestCatalogue::databases);
}

}  // namespace corvo::telemetry::contracts
