#pragma once

struct sqlite3;

namespace corvo::shared {

/// Makes what runs on a connection end with `InterruptStatements` for as long as the object lives.
class Interruptible {
 public:
  explicit Interruptible(sqlite3* handle) noexcept;
  Interruptible(const Interruptible&) = delete;
  Interruptible& operator=(const Interruptible&) = delete;
  ~Interruptible();

 private:
  void Join() noexcept;

  sqlite3* handle_;
  Interruptible* former_ = nullptr;
  Interruptible* next_ = nullptr;

  friend void InterruptStatements() noexcept;
};

}  // namespace corvo::shared
