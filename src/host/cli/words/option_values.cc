#include "host/cli/words/option_values.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>
#include <type_traits>

#include "host/cli/words/wrong_usage.h"
#include "host/facts/catalogue_view.h"
#include "storage/database_name.h"

namespace corvo::telemetry::host {
namespace {

using Reader = std::function<void(const std::string& word)>;

CLI::Option& AddOption(CLI::App& command, const OptionText& text, const Reader& read) {
  const auto read_all = [read](const CLI::results_t& words) {
    std::for_each(words.begin(), words.end(), read);
    return true;
  };
  return *command.add_option(text.name, CLI::callback_t(read_all), text.description)->type_name(text.type);
}

template <class Number>
Number ReadNumber(const std::string& option, const std::string& word, Number lowest, Number highest) {
  Number number{};
  const char* last = word.data() + word.size();
  const auto [end, error] = std::from_chars(word.data(), last, number);
  if (error == std::errc::invalid_argument || end != last) {
    WrongUsage(fmt::format("{} must be a {} from {} to {}, not \"{}\"", option,
                           std::is_integral_v<Number> ? "whole number" : "number", lowest, highest, Shown(word)));
  }
  // Asked this way round, so that a value that is no number is out of range, too.
  const bool within = error == std::errc() && number >= lowest && number <= highest;
  if (!within) {
    WrongUsage(fmt::format("{} must be from {} to {}; {} is not in range", option, lowest, highest, Shown(word)));
  }
  return number;
}

std::string KnownDatabase(const std::string& option, const std::string& word) {
  std::vector<std::string> known;
  const std::string wanted = shared::RemoveDatabaseExtension(LowerCase(word));
  for (const DatabaseView& database : ReadCatalogue().databases) {
    if (LowerCase(database.database) == wanted) {
      return database.database;
    }
    known.push_back(database.database);
  }
  WrongUsage(fmt::format("{}: there is no database {}{}; databases are {}", option, Shown(word),
                         DidYouMean(wanted, known), fmt::join(known, ", ")));
}

std::string KnownTable(const std::string& word) {
  std::vector<std::string> known;
  for (const ContractView& contract : ReadCatalogue().contracts) {
    if (LowerCase(contract.table) == LowerCase(word)) {
      return contract.table;
    }
    known.push_back(contract.table);
  }
  WrongUsage(fmt::format("there is no table {}{}; contracts shows all tables", Shown(word), DidYouMean(word, known)));
}

}  // namespace

CLI::Option& AddText(CLI::App& command, const OptionText& text, std::string& value) {
  return AddOption(command, text, [&value](const std::string& word) { value = word; });
}

CLI::Option& AddChoice(CLI::App& command, const OptionText& text, std::string& value,
                       const std::vector<std::string>& choices) {
  const std::string option = text.name;
  CLI::Option& added = AddOption(command, text, [&value, option, choices](const std::string& word) {
    if (std::find(choices.begin(), choices.end(), word) == choices.end()) {
      WrongUsage(fmt::format("{} must be one of {}, not \"{}\"{}", option, fmt::join(choices, ", "), Shown(word),
                             DidYouMean(word, choices)));
    }
    value = word;
  });
  return value.empty() ? added : *added.description(fmt::format("{}; {} when not given", text.description, value));
}

CLI::Option& AddDatabases(CLI::App& command, const OptionText& text, std::vector<std::string>& values) {
  const std::string option = text.name;
  CLI::Option& added = AddOption(command, text, [&values, option](const std::string& word) {
    const std::string name = KnownDatabase(option, word);
    if (std::find(values.begin(), values.end(), name) == values.end()) {
      values.push_back(name);
    }
  });
  return *added.multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option& AddTable(CLI::App& command, const OptionText& text, std::string& value) {
  return *AddOption(command, text, [&value](const std::string& word) { value = KnownTable(word); }).required();
}

template <class Number>
CLI::Option& AddNumber(CLI::App& command, const OptionText& text, Number& value, Number lowest, Number highest) {
  const std::string option = text.name;
  CLI::Option& added = AddOption(command, text, [&value, option, lowest, highest](const std::string& word) {
    value = ReadNumber(option, word, lowest, highest);
  });
  const bool has_default = value >= lowest && value <= highest;
  return *added.description(fmt::format("{} (from {} to {}{})", text.description, lowest, highest,
                                        has_default ? fmt::format("; {} when not given", value) : ""));
}

CLI::Option& AddNumber(CLI::App& command, const OptionText& text, std::optional<double>& value, double lowest,
                       double highest) {
  const std::string option = text.name;
  CLI::Option& added = AddOption(command, text, [&value, option, lowest, highest](const std::string& word) {
    value = ReadNumber(option, word, lowest, highest);
  });
  return *added.description(fmt::format("{} (from {} to {})", text.description, lowest, highest));
}

CLI::Option& AddNumbers(CLI::App& command, const OptionText& text, std::vector<std::int64_t>& values) {
  const std::string option = text.name;
  CLI::Option& added = AddOption(command, text, [&values, option](const std::string& word) {
    using Limits = std::numeric_limits<std::int64_t>;
    values.push_back(ReadNumber(option, word, Limits::min(), Limits::max()));
  });
  return *added.multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

template CLI::Option& AddNumber(CLI::App&, const OptionText&, int&, int, int);
template CLI::Option& AddNumber(CLI::App&, const OptionText&, std::uint32_t&, std::uint32_t, std::uint32_t);
template CLI::Option& AddNumber(CLI::App&, const OptionText&, std::uint64_t&, std::uint64_t, std::uint64_t);
template CLI::Option& AddNumber(CLI::App&, const OptionText&, double&, double, double);

}  // namespace corvo::telemetry::host
