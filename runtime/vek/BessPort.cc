#include "runtime/vek/BessPort.h"

#include "proto/bess.pb.h"
#include "runtime/trace/Trace.h"

namespace Vek {

BessPort::BessPort(Lumo::String name, Lumo::String driver, google::protobuf::Message* initArgs,
                   unsigned char numIncQ, unsigned short incQSize, unsigned char numOutQ,
                   unsigned short outQSize)
    : name_(std::move(name)),
      driver_(std::move(driver)),
      initArgs_(initArgs),
      numIncQ_(numIncQ),
      incQSize_(incQSize),
      numOutQ_(numOutQ),
      outQSize_(outQSize) {}

BessPort::~BessPort() = default;

void BessPort::handleInit() { sendCreatePortRequest(initArgs_.get()); }

void BessPort::sendCreatePortRequest(const google::protobuf::Message* arg) {
  auto* request = new bess::pb::CreatePortRequest;
  request->set_name(name_.str());
  request->set_driver(driver_.str());
  request->set_numincq(numIncQ_);
  request->set_incqsize(incQSize_);
  request->set_numoutq(numOutQ_);
  request->set_outqsize(outQSize_);
  if (arg) request->mutable_arg()->PackFrom(*arg);
  VEK_TRACE(debug, "create port {} driver {}", name_, driver_);
  created_ = true;
  sendCmd(Lumo::makePtr<GrpcCmd>(request, createPortRequest));
}

void BessPort::handleDeInit() {
  if (!created_) return;
  created_ = false;
  auto* request = new bess::pb::DestroyPortRequest;
  request->set_name(name_.str());
  VEK_TRACE(debug, "destroy port {}", name_);
  sendCmd(Lumo::makePtr<GrpcCmd>(request, destroyPortRequest));
}

}  // namespace Vek
