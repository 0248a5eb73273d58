#pragma once

#include <google/protobuf/message.h>

#include <vector>

namespace corvo::telemetry::common::collection {

/// A list of messages with a cursor. It never owns the messages. Not thread-safe.
template <class T, class Items>
class Collection {
 public:
  Collection() = default;
  Collection(const Collection&) = delete;
  Collection& operator=(const Collection&) = delete;
  virtual ~Collection() = default;

  /// Appends the message and rewinds the cursor.
  void Add(T message) {
    items_.push_back(message);
    Rewind();
  }

  /// Sets the cursor to the first element.
  void Rewind() { cursor_ = items_.begin(); }

  /// True while `Next` has an element to hand out.
  [[nodiscard]] bool HasMore() const { return !items_.empty() && cursor_ != items_.end(); }

  /// The element under the cursor, which moves on by one; null when there is none.
  [[nodiscard]] T Next() { return HasMore() ? *cursor_++ : nullptr; }

 private:
  Items items_;
  typename Items::iterator cursor_;  // set by the first insertion
};

using MessageCollection = Collection<google::protobuf::Message*, std::vector<google::protobuf::Message*>>;

/// The contracts of one pass.
class ContractsCollection : public MessageCollection {};

/// The databases that contracts are matched with.
class DatabasesCollection : public MessageCollection {};

}  // namespace corvo::telemetry::common::collection
