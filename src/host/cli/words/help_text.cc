#include "host/cli/words/help_text.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <memory>
#include <utility>

#include "host/show/failure.h"
#include "host/show/fold.h"
#include "host/show/text_table.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kOptionNames = 26;  // columns
constexpr std::size_t kCommandNames = 13;

using Options = std::vector<const CLI::Option*>;

/// A name with its meaning in a column at its right, or below a name that is too long for that.
std::string Entry(const std::string& name, const std::string& meaning, std::size_t names) {
  const std::string text = Indented(meaning, names, kWidth);
  const std::string line = "  " + name;
  return TextWidth(line) + 2 > names ? line + "\n" + text : fmt::format("{:<{}}", line, names) + text.substr(names);
}

std::string NameOf(const CLI::Option& option) {
  if (option.get_positional()) {
    return option.get_name();
  }
  std::string name = option.get_type_size() == 0 ? "" : " " + option.get_type_name();
  for (const std::string& each : option.get_lnames()) {
    name.insert(0, "--" + each);
  }
  for (const std::string& each : option.get_snames()) {
    name.insert(0, "-" + each + ", ");
  }
  return name;
}

std::string Section(const char* title, const Options& options) {
  std::string text = options.empty() ? "" : fmt::format("\n{}:\n", title);
  for (const CLI::Option* option : options) {
    const bool needed = option->get_required() && !option->get_positional();
    text += Entry(NameOf(*option), option->get_description() + (needed ? " (required)" : ""), kOptionNames);
  }
  return text;
}

std::string Usage(const std::string& name, const CLI::App& app, const Options& words) {
  std::string text = fmt::format("\nUsage: {}{}", name, app.get_parent() == nullptr ? " COMMAND" : "");
  for (const CLI::Option* word : words) {
    text += " " + NameOf(*word);
  }
  return text + " [OPTIONS]\n";
}

std::string CommandList(const CLI::App& app) {
  std::string text;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    text += Entry(command->get_name(), command->get_description(), kCommandNames);
  }
  return text.empty() ? "" : "\nCommands:\n" + text;
}

// All of the text is made here, so that it is the same with every version of the parser.
class HelpText : public CLI::FormatterBase {
 public:
  explicit HelpText(std::vector<Example> examples) : examples_(std::move(examples)) {}

  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode /*mode*/) const override {
    const Options words = app->get_options([](const CLI::Option* option) { return option->get_positional(); });
    const Options options = app->get_options([](const CLI::Option* option) { return !option->get_positional(); });
    const std::string footer = app->get_footer();
    return Indented(app->get_description() + ".", 0, kWidth) + Examples() + Usage(name, *app, words) +
           Section("Words", words) + Section("Options", options) + CommandList(*app) +
           (footer.empty() ? "" : "\n" + FoldedLines(footer, kWidth)) + "\n" + FoldedLines(kExitCodes, kWidth);
  }

 private:
  [[nodiscard]] std::string Examples() const {
    std::string text = "\nExamples:\n";
    for (const Example& example : examples_) {
      text += fmt::format("  corvo-telemetry-host {}\n{}", example.words, Indented(example.use, 6, kWidth));
    }
    return text;
  }

  std::vector<Example> examples_;
};

}  // namespace

void SetHelp(CLI::App& command, const std::vector<Example>& examples, const std::string& footer) {
  command.formatter(std::make_shared<HelpText>(examples));
  command.footer(footer);
}

}  // namespace corvo::telemetry::host
