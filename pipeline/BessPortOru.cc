#include "pipeline/BessPortOru.h"

#include "proto/bess.pb.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

BessPortOru::BessPortOru(Lumo::String name, Lumo::String driver,
                         google::protobuf::Message* initArgs,
                         Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup)
    : Vek::BessPort(std::move(name), std::move(driver), initArgs, 0, 0, 0, 0),
      cmdConfigGroup_(std::move(cmdConfigGroup)) {
  handleInitialized();
}

BessPortOru::~BessPortOru() { handleDelete(); }

void BessPortOru::handleInitialized() {
  VEK_TRACE(info, "port: {}, driver: {}", name(), driver());
  handleInit();
  initialized_ = true;
}

void BessPortOru::handleDelete() {
  VEK_TRACE(info, "port: {}", name());
  handleDeInit();
}

void BessPortOru::sendCmd(const Lumo::Ptr<Vek::GrpcCmd>& cmd) {
  cmdConfigGroup_->cmdBatchEnq(cmd);
  cmdConfigGroup_->enqueueVersionInc(1);
}

void BessPortOru::setPortConf() {
  auto* request = new bess::pb::SetPortConfRequest;
  request->set_name(name().str());
  request->mutable_conf()->set_adminup(true);
  sendCmd(Vek::portGrpcCmdFactory(request, Vek::portConfRequest));
}

}  // namespace VekL3Mcast
