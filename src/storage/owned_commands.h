#pragma once

#include <unordered_set>

#include "storage/command.h"

namespace corvo::shared {

/// The commands that a storage was given, each once however often it was given, deleted with their owner.
class OwnedCommands {
 public:
  OwnedCommands() = default;
  OwnedCommands(const OwnedCommands&) = delete;
  OwnedCommands& operator=(const OwnedCommands&) = delete;

  ~OwnedCommands() {
    for (ICommand* command : commands_) {
      delete command;
    }
  }

  /// Null is nothing to own.
  void Add(ICommand* command) {
    if (command != nullptr) {
      commands_.insert(command);
    }
  }

 private:
  std::unordered_set<ICommand*> commands_;
};

}  // namespace corvo::shared
