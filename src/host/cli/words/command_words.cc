#include "host/cli/words/command_words.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "host/cli/words/wrong_usage.h"

namespace corvo::telemetry::host {
namespace {

bool IsOption(const std::string& word) { return word.size() > 1 && word[0] == '-'; }

std::vector<std::string> Commands(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> LongOptions(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  return names;
}

/// The names of the words that the command takes without an option's name before them.
std::vector<std::string> PlainWords(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_positional()) {
      names.push_back(option->get_name());
    }
  }
  return names;
}

/// Walks over the words; knows the command that the next one belongs to.
class WordWalk {
 public:
  WordWalk(const CLI::App& app, const std::vector<std::string>& words) : app_(app), level_(&app), words_(words) {}

  void Check() {
    while (next_ < words_.size()) {
      const std::string& word = words_[next_++];
      if (IsOption(word)) {
        CheckOption(word);
      } else {
        TakeWord(word);
      }
    }
  }

 private:
  void TakeWord(const std::string& word) {
    if (level_ == &app_) {
      EnterCommand(word);
    } else if (word.empty() || ++plain_words_ > PlainWords(*level_).size()) {
      RefuseWord(word);
    }
  }

  [[noreturn]] void RefuseWord(const std::string& word) const {
    const std::vector<std::string> taken = PlainWords(*level_);
    if (taken.empty()) {
      WrongUsage(fmt::format("{} takes options only, and {} is none", level_->get_name(), Shown(word)));
    }
    WrongUsage(word.empty() ? fmt::format("{} needs a {}", level_->get_name(), taken.front())
                            : fmt::format("{} takes one {}, and {} is one more", level_->get_name(), taken.front(),
                                          Shown(word)));
  }

  void EnterCommand(const std::string& word) {
    const std::vector<std::string> commands = Commands(app_);
    if (std::find(commands.begin(), commands.end(), word) == commands.end()) {
      WrongUsage(fmt::format("there is no command {}{}; commands are {}", Shown(word), DidYouMean(word, commands),
                             CommandNames(app_)));
    }
    level_ = app_.get_subcommand(word);
  }

  void CheckOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const CLI::Option& option = FindOption(name);
    const bool takes_value = option.get_items_expected_max() > 0;
    const bool several = !takes_value || option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    if (!seen_.insert(&option).second && !several) {
      WrongUsage(fmt::format("{} is given more than once", name));
    }
    if (takes_value) {
      CheckValue(name, equals == std::string::npos ? NextWord() : word.substr(equals + 1));
    } else if (equals != std::string::npos) {
      WrongUsage(fmt::format("{} takes no value", name));
    }
  }

  [[nodiscard]] const CLI::Option& FindOption(const std::string& name) const {
    const CLI::Option* option = level_->get_option_no_throw(name);
    if (option == nullptr) {
      const std::string meant = Shown(name) + DidYouMean(name, LongOptions(*level_));
      WrongUsage(level_ == &app_ ? fmt::format("there is no option {} before the command", meant)
                                 : fmt::format("{} has no option {}", level_->get_name(), meant));
    }
    return *option;
  }

  [[nodiscard]] std::string NextWord() { return next_ < words_.size() ? words_[next_++] : ""; }

  static void CheckValue(const std::string& name, const std::string& value) {
    if (value.empty()) {
      WrongUsage(name + " needs a value");
    }
    if (value.starts_with("--")) {
      WrongUsage(fmt::format("{} needs a value, and {} is an option (a file of that name is ./{})", name, Shown(value),
                             Shown(value)));
    }
  }

  const CLI::App& app_;
  const CLI::App* level_;
  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
  std::size_t plain_words_ = 0;  ///< of the command, until now
  std::set<const CLI::Option*> seen_;
};

}  // namespace

void CheckWords(const CLI::App& app, const std::vector<std::string>& words) { WordWalk(app, words).Check(); }

std::string CommandNames(const CLI::App& app) { return fmt::format("{}", fmt::join(Commands(app), ", ")); }

}  // namespace corvo::telemetry::host
