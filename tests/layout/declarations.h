// As much of the standard library and of protobuf as the headers with virtual operations need to be laid out. For
// compilers that lay out for a system whose own headers are not here.
#pragma once

#define CORVO_COMMONS_API
#define CORVO_STORAGE_API

namespace std {

using size_t = decltype(sizeof(0));
using int32_t = __INT32_TYPE__;
using int64_t = __INT64_TYPE__;
using uint32_t = __UINT32_TYPE__;
using uint64_t = __UINT64_TYPE__;

class exception {
 public:
  virtual ~exception();
};
class system_error : public exception {};
class exception_ptr {};

class string_view {};
class string {
 public:
  string();
  string(const string& other);
  string(string&& other) noexcept;
  string& operator=(const string& other);
  string& operator=(string&& other) noexcept;
  ~string();
};

template <class T>
T&& move(T& value) noexcept;
template <class T>
void swap(T& a, T& b) noexcept;

template <class T>
class unique_ptr {
 public:
  ~unique_ptr();
};
template <class T>
class shared_ptr {};
template <class T>
class shared_ptr<T[]> {
 public:
  T* get() const;
  void swap(shared_ptr& other) noexcept;
};
template <class T>
shared_ptr<T> make_shared(size_t size);

template <class T>
class vector {
 public:
  using iterator = T*;
  ~vector();
  void push_back(T value);
  iterator begin();
  iterator end() const;
  bool empty() const;
};
template <class Key, class Value>
class map {};

}  // namespace std

namespace google::protobuf {

class Message;

}  // namespace google::protobuf
