#include <google/protobuf/descriptor.pb.h>

#include "cleanup/trimming.h"
#include "contracts/lookups.h"

namespace corvo::telemetry::cleanup {

using google::protobuf::Message;

std::uint32_t ReadLimitThroughFirst(const Message* contract, const Message* first) {
  if (contract == nullptr || first == nullptr) {
    return 0;
  }
  const auto& options = contracts::GetPersistance(*contract);
  // A type without options of its own reads the default instance of all types, which must stay as it is.
  if (!first->GetDescriptor()->options().HasExtension(contract::storage::persistance)) {
    return options.database_options().max_size_mb();
  }
  // Deliberate write through the type's shared option object.
  auto& shared = const_cast<contract::storage::PersistanceMessageOptions&>(contracts::GetPersistance(*first));
  shared.CopyFrom(options);
  return shared.database_options().max_size_mb();
}

}  // namespace corvo::telemetry::cleanup
