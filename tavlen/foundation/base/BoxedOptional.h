#pragma once

#include <memory>
#include <optional>
#include <utility>

namespace tavlen {

/// A std::optional that takes the memory of a pointer while it is empty, for lists of large values
/// that may have many gaps. A copy has a value of its own. Threads: as the value.
template <class T>
class BoxedOptional {
 public:
  using value_type = T;

  BoxedOptional() = default;
  BoxedOptional(T value)  // NOLINT(google-explicit-constructor): as std::optional
      : box_(std::make_unique<T>(std::move(value))) {}
  BoxedOptional(const BoxedOptional& other)
      : box_(other.box_ ? std::make_unique<T>(*other.box_) : nullptr) {}
  BoxedOptional(BoxedOptional&& other) noexcept = default;
  BoxedOptional& operator=(BoxedOptional other) noexcept {
    box_ = std::move(other.box_);
    return *this;
  }
  ~BoxedOptional() = default;

  bool has_value() const { return box_ != nullptr; }
  explicit operator bool() const { return has_value(); }

  /// Only where there is a value.
  const T& operator*() const { return *box_; }
  T& operator*() { return *box_; }
  const T* operator->() const { return box_.get(); }
  T* operator->() { return box_.get(); }
  /// Throws std::bad_optional_access where there is no value.
  const T& value() const {
    if (!box_) throw std::bad_optional_access();
    return *box_;
  }
  T& value() { return const_cast<T&>(std::as_const(*this).value()); }

  /// Makes a new value, which takes the place of any other.
  T& emplace() {
    box_ = std::make_unique<T>();
    return *box_;
  }
  void reset() { box_.reset(); }

  bool operator==(const BoxedOptional& other) const {
    return box_ && other.box_ ? *box_ == *other.box_ : box_ == other.box_;
  }

 private:
  std::unique_ptr<T> box_;
};

}  // namespace tavlen
