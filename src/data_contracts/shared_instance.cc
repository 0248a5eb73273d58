#include "data_contracts/shared_instance.h"

#include <map>
#include <mutex>

namespace corvo::telemetry::contract::storage {

google::protobuf::Message* SharedInstance(const google::protobuf::Message& prototype) {
  // Both outlive every user, static destructors included.
  static auto& mutex = *new std::mutex;
  static auto& instances = *new std::map<const google::protobuf::Descriptor*, google::protobuf::Message*>;
  const std::lock_guard lock(mutex);
  google::protobuf::Message*& instance = instances[prototype.GetDescriptor()];
  if (instance == nullptr) {
    instance = prototype.New();
  }
  return instance;
}

}  // namespace corvo::telemetry::contract::storage
