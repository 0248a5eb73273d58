#pragma once

#include <google/protobuf/message.h>

#include <functional>
#include <vector>

namespace corvo::test {

/// The contract catalogue of a program that links corvo-test-catalogue, in place of the real one: empty unless an
/// object lives. One at a time.
class TestCatalogue {
 public:
  TestCatalogue();
  TestCatalogue(const TestCatalogue&) = delete;
  TestCatalogue& operator=(const TestCatalogue&) = delete;
  ~TestCatalogue();

  std::vector<google::protobuf::Message*> contracts;
  std::vector<google::protobuf::Message*> databases;

  /// Called whenever either list is asked for; what it throws leaves the catalogue.
  std::function<void()> on_reading = [] {};
};

}  // namespace corvo::test
