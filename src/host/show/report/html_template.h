#pragma once

#include <map>
#include <string>
#include <string_view>

#include "host/show/json_text.h"

namespace corvo::telemetry::host {

/// Fills a template (https://mustache.github.io/mustache.5.html) with the values of a document. Every text is shown as
/// `Printable` does and escaped for HTML. Null and the empty text count as false, and hide what has the same name
/// further outside.
///
/// @param markup what the template takes in three braces, as it stands: nothing that comes from a file.
/// @throws std::logic_error when the template is none.
[[nodiscard]] std::string FillTemplate(std::string_view text, const Json& values,
                                       const std::map<std::string, std::string>& markup = {});

}  // namespace corvo::telemetry::host
