#include "dataplane/TableFactory.h"

#include "dataplane/IgmpV2.h"
#include "dataplane/L2MVxlanIn.h"
#include "dataplane/L2MVxlanOut.h"
#include "dataplane/MMplsIn.h"
#include "dataplane/MMplsOut.h"
#include "dataplane/L3MVxlanIn.h"
#include "dataplane/L3MVxlanOut.h"
#include "dataplane/MetaData.h"
#include "dataplane/Mfib.h"
#include "dataplane/PcapPort.h"
#include "dataplane/PortModule.h"
#include "dataplane/TxDemuxer.h"
#include "dataplane/VlanMetadata.h"
#include "runtime/vek/ModuleClass.h"

namespace Dataplane {

std::unique_ptr<ModuleTable> TableFactory::moduleTable(std::uint32_t moduleClass,
                                                       const ModuleContext& context) {
  namespace Class = Vek::VekModule;
  switch (moduleClass) {
    case Class::portInc:
    case Class::portOut:
      return std::make_unique<PortModule>();
    case Class::mfib:
    case Class::mfibVek:
      return std::make_unique<Mfib>(context);
    case Class::metaData:
      return std::make_unique<MetaData>();
    case Class::vlanMetadata:
      return std::make_unique<VlanMetadata>();
    case Class::txDemuxer:
      return std::make_unique<TxDemuxer>(context);
    case Class::igmpV2:
      return std::make_unique<IgmpV2>();
    case Class::l2MVxlanIn:
      return std::make_unique<L2MVxlanIn>();
    case Class::l2MVxlanOut:
      return std::make_unique<L2MVxlanOut>();
    case Class::mMplsIn:
      return std::make_unique<MMplsIn>(context);
    case Class::mMplsOut:
      return std::make_unique<MMplsOut>(context);
    case Class::l3MVxlanIn:
      return std::make_unique<L3MVxlanIn>();
    case Class::l3MVxlanOut:
      return std::make_unique<L3MVxlanOut>(context);
    default:
      return nullptr;
  }
}

std::unique_ptr<ModuleTable> TableFactory::portTable(std::string_view driver) {
  if (driver == "PCAPPort") return std::make_unique<PcapPort>();
  if (driver == "PimRegPort") return std::make_unique<PortModule>();
  return nullptr;
}

}  // namespace Dataplane
