// The persistence service: trees that modules declare, over the store of settings.
#pragma once

#include "headless/config_store.h"
#include "headless/permanent_object.h"
#include "host/config_api.h"

#include <memory>
#include <string>

namespace headless {

class PersistenceService final : public PermanentObject<IZyPersistenceService> {
 public:
  PersistenceService(std::size_t& live, std::shared_ptr<ConfigStore> store);
  ~PersistenceService() override;

  zyresult Configure(const char* domain, IZyVisitor* visitor) override;
  zyresult StartEntry(const char* name, ZyEntryKind kind) override;
  zyresult AddValue(const char* type, IZyObject*& value) override;
  zyresult EndEntry(IZyObject*& entry) override;

  struct Node;

 private:
  std::size_t& live_;
  std::shared_ptr<ConfigStore> store_;
  std::shared_ptr<Node> open_;  // the entry started last, the domain itself at first; null outside a visit
};

}  // namespace headless
