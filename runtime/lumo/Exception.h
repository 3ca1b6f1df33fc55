#pragma once

#include <exception>
#include <string>

#include "runtime/lumo/String.h"

namespace Lumo {

// The one exception type of the runtime; its text is msg().
class Exception : public std::exception {
 public:
  explicit Exception(String message) : msg_(std::move(message)) {}
  const String& msg() const noexcept { return msg_; }
  const char* what() const noexcept override { return msg_.c_str(); }

 private:
  String msg_;
};

}  // namespace Lumo
