#pragma once

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace corvo::test {

/// Takes the superuser's rights away from this process while the object lives; other users keep what they have.
class Unprivileged {
 public:
  Unprivileged() : dropped_(geteuid() == 0) {
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
