#include "host/show/json_text.h"

namespace corvo::telemetry::host {

std::string JsonText(const Json& document) { return document.dump(2, ' ', false, Json::error_handler_t::replace); }

}  // namespace corvo::telemetry::host
