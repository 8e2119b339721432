// The load options in the host's configuration: the domain "gltfLoader" with the keyed entry "gltfLoadOptions",
// whose child "LoadOptions" holds one entry an option.
#pragma once

#include "host/stream_adapter.h"
#include "host/user_config.h"
#include "options/load_option_table.h"

// Handles of the host, by LoadOption; empty where the host could not declare them.
struct LoadConfig {
  struct Value {
    CZyUser_PersistEntry entry;
    CZyUser_PersistValue value;
  };

  CZyUser_PersistEntry root;
  std::array<Value, kLoadOptionCount> values;
};

// Declares the tree.
class LoadPersistOptionsVisitor final : public CZyImpl_Visitor {
 public:
  explicit LoadPersistOptionsVisitor(LoadConfig& config) : config_(config) {}
  zyresult Evaluate() override;

 private:
  void DeclareValue(LoadOption option);

  LoadConfig& config_;
  CZyPersistenceService service_;
};

// Makes the module's configuration object and has the host run the visitor; does nothing the second time.
void ReadyConfig();
// Lets go of the host's handles, before the module goes.
void DropConfig();

// Replaces each option that the configuration holds; the others stay.
void ReadConfig(LoadOptions& options);
void WriteConfig(const LoadOptions& options);
