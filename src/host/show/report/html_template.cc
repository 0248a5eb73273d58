#include "host/show/report/html_template.h"

#include <kainjow/mustache.hpp>
#include <stdexcept>

#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

namespace mustache = kainjow::mustache;

mustache::data DataOf(const Json& value) {
  if (value.is_object()) {
    mustache::data object;
    for (const auto& [name, member] : value.items()) {
      object.set(name, DataOf(member));
    }
    return object;
  }
  if (value.is_array()) {
    mustache::data list(mustache::data::type::list);
    for (const Json& element : value) {
      list.push_back(DataOf(element));
    }
    return list;
  }
  if (value.is_string()) {
    const std::string text = Printable(value.get_ref<const std::string&>());
    return text.empty() ? mustache::data(false) : mustache::data(text);
  }
  return value.is_number() ? mustache::data(value.dump()) : mustache::data(value == true);
}

}  // namespace

std::string FillTemplate(std::string_view text, const Json& values, const std::map<std::string, std::string>& markup) {
  // The analyzer loses sight of what a std::unique_ptr in the data owns.
  // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
  mustache::data data = DataOf(values);
  for (const auto& [name, html] : markup) {
    data.set(name, html);
  }
  mustache::mustache page{std::string(text)};
  std::string html = page.render(data);
  if (!page.is_valid()) {
    throw std::logic_error("a template of the page cannot be filled: " + page.error_message());
  }
  return html;
}

}  // namespace corvo::telemetry::host
