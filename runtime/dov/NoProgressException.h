#pragma once

#include "runtime/lumo/Exception.h"

namespace Dov {

// A task kept asking to run again without doing any work; msg() names it.
class NoProgressException : public Lumo::Exception {
 public:
  using Lumo::Exception::Exception;
};

}  // namespace Dov
