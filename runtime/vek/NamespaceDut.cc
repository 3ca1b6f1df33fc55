#include "runtime/vek/NamespaceDut.h"

namespace Vek {
namespace {
bool namespaceDut = true;
}

bool isNamespaceDut() noexcept { return namespaceDut; }
void namespaceDutIs(bool value) noexcept { namespaceDut = value; }

}  // namespace Vek
