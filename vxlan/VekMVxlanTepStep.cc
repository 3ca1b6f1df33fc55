#include "vxlan/VekMVxlanTepStep.h"

#include "runtime/qel/Entity.h"
#include "runtime/trace/Trace.h"

namespace VekMVxlan {

void MVxlanTepStep::doVekModuleInit() {
  using VekModules::MVxlanTepModule;
  if (!Qel::Entity::singletonExists(MVxlanTepModule::singletonName)) {
    VEK_TRACE(info, "{} not found", MVxlanTepModule::singletonName);
  }
  moduleIs(MVxlanTepModule::moduleIs());
}

}  // namespace VekMVxlan
