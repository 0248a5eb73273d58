#pragma once

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace corvo::test {

/// Takes the superuser's right over every file away while the object lives, if that is wanted; other users keep what
/// they have.
class Unprivileged {
 public:
  explicit Unprivileged(bool wanted = true) : dropped_(wanted && geteuid() == 0) {
    constexpr uid_t kNobody = 65'534;
    if (dropped_ && seteuid(kNobody) != 0) {
      throw std::runtime_error("seteuid");
    }
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;
  ~Unprivileged() {
    if (dropped_ && seteuid(0) != 0) {
      _exit(EXIT_FAILURE);
    }
  }

 private:
  bool dropped_;
};

}  // namespace corvo::test
