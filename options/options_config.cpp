#include "options/options_config.h"

#include <memory>

namespace {

constexpr char kDomain[] = "gltfLoader";
constexpr char kRoot[] = "gltfLoadOptions";
constexpr char kKey[] = "LoadOptions";

std::unique_ptr<LoadConfig> g_config;

}  // namespace

void LoadPersistOptionsVisitor::DeclareValue(LoadOption option) {
  const LoadOptionRow& row = kLoadOptionTable[option];
  LoadConfig::Value& declared = config_.values[option];
  if (ZyFailed(service_.StartEntry(row.name, ZyEntryKind::Plain))) return;
  service_.AddValue(TypeWord(row.type), declared.value);
  service_.EndEntry(declared.entry);
}

zyresult LoadPersistOptionsVisitor::Evaluate() {
  const zyresult started = service_.StartEntry(kRoot, ZyEntryKind::Keyed);
  if (ZyFailed(started)) return started;
  for (std::uint32_t option = 0; option < kLoadOptionCount; ++option)
    DeclareValue(static_cast<LoadOption>(option));
  return service_.EndEntry(config_.root);
}

void ReadyConfig() {
  if (g_config) return;
  g_config = std::make_unique<LoadConfig>();
  CountedRef<IZyVisitor> visitor;
  visitor.Take(new CZyIfc_Visitor<LoadPersistOptionsVisitor>(*g_config));
  CZyPersistenceService().Configure(kDomain, visitor.Raw());
}

void DropConfig() { g_config.reset(); }

void ReadConfig(LoadOptions& options) {
  if (!g_config || ZyFailed(g_config->root.Select(kKey))) return;
  for (const LoadOption option : kConfigOrder)
    ReadOption(options, kLoadOptionTable[option], g_config->values[option].value);
}

void WriteConfig(const LoadOptions& options) {
  if (!g_config) return;
  g_config->root.Insert(kKey);
  for (const LoadOption option : kConfigOrder) {
    const LoadConfig::Value& stored = g_config->values[option];
    stored.entry.Append();
    WriteOption(options, kLoadOptionTable[option], stored.value);
  }
}
