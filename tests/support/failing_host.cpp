#include "tests/support/failing_host.h"

#include "tests/support/failing_proxy.h"

#include <utility>

namespace test_support {

namespace {

const PartRow* FindRow(std::uint32_t id) {
  for (const auto rows : {SceneParts(), MeshParts(), ServiceParts(), ConfigParts()})
    for (const PartRow& row : rows)
      if (row.id == id) return &row;
  return nullptr;
}

}  // namespace

CallFaults::CallFaults() = default;
CallFaults::~CallFaults() = default;

Proxy& CallFaults::Permanent(IZyObject* identity) {
  std::unique_ptr<Proxy>& proxy = permanent_[identity];
  if (!proxy) {
    identity->AddRef();
    proxy = std::make_unique<Proxy>(*this, identity, Lifetime::Permanent);
  }
  return *proxy;
}

IZyObject* CallFaults::Wrap(IZyObject* counted) {
  Proxy* proxy = nullptr;
  for (const std::uint32_t id : {IZyItem::kId, IZyScene::kId})
    if (counted->Interface(id)) proxy = &Permanent(static_cast<IZyObject*>(counted));
  if (proxy)
    counted->Release();
  else
    proxy = new Proxy(*this, counted, Lifetime::Counted);
  proxy->AddRef();
  return proxy;
}

void Proxy::AddRef() {
  ++references_;
  ++faults_.references;
}

void Proxy::Release() {
  --faults_.references;
  if (--references_ == 0 && lifetime_ == Lifetime::Counted) delete this;
}

void* Proxy::Interface(std::uint32_t id) {
  if (id == kInnerObject) return inner_;
  if (faults_.CountAndTest() || (id != 0 && id == faults_.hiddenInterface)) return nullptr;
  if (id == IZyObject::kId) return static_cast<IZyObject*>(this);
  if (const auto known = parts_.find(id); known != parts_.end()) return known->second.asInterface;
  const PartRow* row = FindRow(id);
  void* inner = row ? inner_->Interface(id) : nullptr;
  return inner ? (parts_[id] = row->make(*this, inner)).asInterface : nullptr;
}

FailingHost::FailingHost(IZyHost& inner, IZyScene& scene)
    : inner_(inner), scene_(scene), faults_(std::make_unique<CallFaults>()) {}

FailingHost::~FailingHost() = default;

IZyObject* FailingHost::Service(std::uint32_t id) {
  if (faults_->CountAndTest()) return nullptr;
  IZyObject* service = inner_.Service(id);
  return service ? &faults_->Permanent(service) : nullptr;
}

void FailingHost::FailCall(std::size_t k) {
  faults_->calls = 0;
  faults_->failing = k;
}

void FailingHost::HideInterface(std::uint32_t id) { faults_->hiddenInterface = id; }

std::size_t FailingHost::Calls() const { return faults_->calls; }

IZyScene* FailingHost::Scene() {
  // Getting hold of the scene is the test's doing and no call of a plug-in.
  const std::size_t calls = std::exchange(faults_->calls, 0), failing = std::exchange(faults_->failing, 0);
  auto* scene = static_cast<IZyScene*>(faults_->Permanent(&scene_).Interface(IZyScene::kId));
  faults_->calls = calls;
  faults_->failing = failing;
  return scene;
}

bool FailingHost::AllReleased() const { return faults_->references == 0; }

}  // namespace test_support
