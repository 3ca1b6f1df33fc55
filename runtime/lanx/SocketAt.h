#pragma once

#include "runtime/state/NamespaceName.h"

namespace Lanx {

// A socket opened inside a network namespace: the calling thread enters the namespace
// named `ns` (as `ip netns` names it, under /run/netns), creates the socket and goes back
// to the namespace it was in. The socket stays in the namespace it was made in. The name
// "default" and the empty name mean the calling thread's own namespace. Returns the
// descriptor, or -1 with errno set.
int socketAt(int domain, int type, int protocol, const NamespaceName& ns);

}  // namespace Lanx
