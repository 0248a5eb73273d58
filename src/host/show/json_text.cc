#include "host/show/json_text.h"

#include "common/text.h"

namespace corvo::telemetry::host {

std::string JsonText(const Json& document) { return document.dump(2, ' ', false, Json::error_handler_t::replace); }

Json ErrorJson(const common::Error& error) {
  common::Error valid = error;
  for (std::string* text : {&valid.what, &valid.type, &valid.origin}) {
    *text = common::ValidUtf8(*text);
  }
  return Json::parse(common::ErrorText(valid));
}

}  // namespace corvo::telemetry::host
