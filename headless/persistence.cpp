#include "headless/persistence.h"

#include "headless/host_object.h"

#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

namespace headless {

// A declared entry. It lives as long as an entry or value below it.
struct PersistenceService::Node {
  std::shared_ptr<Node> parent;  // null for the domain
  std::string name;
  ZyEntryKind kind = ZyEntryKind::Plain;
  std::optional<std::string> key;  // the current child of a keyed entry
};

namespace {

using Node = PersistenceService::Node;
using Path = std::vector<std::string>;

// Where the entry stands, without its own key. Empty when an entry above has no current child.
Path PlaceOf(const Node& node) {
  if (!node.parent) return {node.name};
  Path path = PlaceOf(*node.parent);
  if (path.empty()) return path;
  if (node.parent->kind == ZyEntryKind::Keyed) {
    if (!node.parent->key) return {};
    path.push_back(*node.parent->key);
  }
  path.push_back(node.name);
  return path;
}

class Entry final : public HostObject<IZyPersistEntry> {
 public:
  Entry(std::size_t& live, std::shared_ptr<ConfigStore> store, std::shared_ptr<Node> node)
      : HostObject(live), store_(std::move(store)), node_(std::move(node)) {}

  zyresult Select(const char* key) override {
    return StandOn(key, [this](const Path& path) { return store_->HasObject(path); });
  }
  zyresult Insert(const char* key) override {
    return StandOn(key, [this](const Path& path) { return store_->MakeObject(path), true; });
  }
  zyresult Append() override {
    const Path path = PlaceOf(*node_);
    if (path.empty()) return ZYe_FAILED;
    if (node_->kind == ZyEntryKind::Plain) store_->Remove(path);
    return ZYe_OK;
  }

 private:
  template <class Visit>
  zyresult StandOn(const char* key, Visit visit) {
    Path path = PlaceOf(*node_);
    if (!key || node_->kind != ZyEntryKind::Keyed || path.empty()) return ZYe_FAILED;
    path.push_back(key);
    if (!visit(path)) return ZYe_FAILED;
    node_->key = key;
    return ZYe_OK;
  }

  std::shared_ptr<ConfigStore> store_;
  std::shared_ptr<Node> node_;
};

enum class ValueType { Boolean, Integer, Float };

std::optional<ValueType> TypeOf(std::string_view word) {
  constexpr std::pair<std::string_view, ValueType> kWords[] = {
      {"boolean", ValueType::Boolean}, {"integer", ValueType::Integer}, {"float", ValueType::Float}};
  for (const auto& [known, type] : kWords)
    if (known == word) return type;
  return std::nullopt;
}

class PersistValue final : public HostObject<IZyPersistValue> {
 public:
  PersistValue(std::size_t& live, std::shared_ptr<ConfigStore> store, std::shared_ptr<Node> node, ValueType type)
      : HostObject(live), store_(std::move(store)), node_(std::move(node)), type_(type) {}

  zyresult GetInt(std::int32_t& value) override {
    const Path path = PlaceOf(*node_);
    if (type_ == ValueType::Float || path.empty()) return ZYe_FAILED;
    using Integers = ConfigStore::Integers;
    return Give(store_->Integer(path, type_ == ValueType::Boolean ? Integers::Booleans : Integers::Any), value);
  }
  zyresult SetInt(std::int32_t value) override {
    const Path path = PlaceOf(*node_);
    if (type_ == ValueType::Float || path.empty()) return ZYe_FAILED;
    store_->SetInteger(path, value);
    return ZYe_OK;
  }
  zyresult GetDouble(double& value) override {
    const Path path = PlaceOf(*node_);
    return type_ == ValueType::Float && !path.empty() ? Give(store_->Number(path), value) : ZYe_FAILED;
  }
  zyresult SetDouble(double value) override {
    const Path path = PlaceOf(*node_);
    // JSON has no word for the others.
    if (type_ != ValueType::Float || path.empty() || !std::isfinite(value)) return ZYe_FAILED;
    store_->SetNumber(path, value);
    return ZYe_OK;
  }

 private:
  template <class T>
  static zyresult Give(const std::optional<T>& stored, T& value) {
    if (!stored) return ZYe_FAILED;
    value = *stored;
    return ZYe_OK;
  }

  std::shared_ptr<ConfigStore> store_;
  std::shared_ptr<Node> node_;
  ValueType type_;
};

}  // namespace

PersistenceService::PersistenceService(std::size_t& live, std::shared_ptr<ConfigStore> store)
    : live_(live), store_(std::move(store)) {}

PersistenceService::~PersistenceService() = default;

zyresult PersistenceService::Configure(const char* domain, IZyVisitor* visitor) {
  if (!domain || !*domain || !visitor || open_) return ZYe_FAILED;
  open_ = std::make_shared<Node>();
  open_->name = domain;
  const zyresult result = visitor->Evaluate();
  open_.reset();
  return result;
}

zyresult PersistenceService::StartEntry(const char* name, ZyEntryKind kind) {
  if (!open_ || !name || !*name) return ZYe_FAILED;
  open_ = std::make_shared<Node>(Node{open_, name, kind, std::nullopt});
  return ZYe_OK;
}

zyresult PersistenceService::AddValue(const char* type, IZyObject*& value) {
  const std::optional<ValueType> known = type ? TypeOf(type) : std::nullopt;
  if (!open_ || !open_->parent || open_->kind != ZyEntryKind::Plain || !known) return ZYe_FAILED;
  value = new PersistValue(live_, store_, open_, *known);
  return ZYe_OK;
}

zyresult PersistenceService::EndEntry(IZyObject*& entry) {
  if (!open_ || !open_->parent) return ZYe_FAILED;
  entry = new Entry(live_, store_, open_);
  open_ = open_->parent;
  return ZYe_OK;
}

}  // namespace headless
