// A host that forwards everything to another one and lets one call fail.
#pragma once

#include "host/module_api.h"
#include "host/scene_api.h"

#include <cstddef>
#include <memory>

namespace test_support {

class CallFaults;

// Every operation of every object counts as a call, the asking for an interface and for a service included;
// AddRef and Release don't. The call that fails isn't forwarded: it gives ZYe_FAILED, or 0 or null where the
// operation returns a value. Each item keeps one identity.
class FailingHost final : public IZyHost {
 public:
  // Both outlive this host, which hands out objects of its own for theirs.
  FailingHost(IZyHost& inner, IZyScene& scene);
  ~FailingHost();

  IZyObject* Service(std::uint32_t id) override;

  // Counts calls anew and fails number `k`, counting from 1; none for 0.
  void FailCall(std::size_t k);
  // Lets all objects lack an interface that hosts may do without.
  void HideInterface(std::uint32_t id);
  std::size_t Calls() const;
  IZyScene* Scene();
  // Whether every reference that was handed out or added has been released.
  bool AllReleased() const;

 private:
  IZyHost& inner_;
  IZyScene& scene_;
  std::unique_ptr<CallFaults> faults_;
};

}  // namespace test_support
