// Objects of the failing host: each stands for one object of the inner host.
#pragma once

#include "host/object.h"

#include <concepts>
#include <cstddef>
#include <map>
#include <memory>
#include <span>
#include <type_traits>

namespace test_support {

class Proxy;

// The calls of one failing host, and its objects that keep their identity.
class CallFaults {
 public:
  CallFaults();
  ~CallFaults();

  // Counts a call; true when it is the one to fail.
  bool CountAndTest() { return ++calls == failing; }
  // The proxy of a counted result, whose reference it takes over; it comes with a reference of its own.
  IZyObject* Wrap(IZyObject* counted);
  // The one proxy of an object that lives as long as the inner host. Without a reference.
  Proxy& Permanent(IZyObject* identity);

  std::size_t calls = 0;
  std::size_t failing = 0;
  std::uint32_t hiddenInterface = 0;
  std::ptrdiff_t references = 0;  // outstanding ones, of all proxies

 private:
  std::map<IZyObject*, std::unique_ptr<Proxy>> permanent_;
};

// One interface of a proxy.
struct AnyPart {
  virtual ~AnyPart() = default;
};

struct MadePart {
  std::unique_ptr<AnyPart> part;
  void* asInterface = nullptr;  // the pointer that Interface gives
};

struct PartRow {
  std::uint32_t id;
  MadePart (*make)(Proxy& owner, void* inner);
};

enum class Lifetime { Counted, Permanent };

class Proxy final : public IZyObject {
 public:
  // Asked for this interface a proxy gives the inner object, uncounted and without a call.
  static constexpr std::uint32_t kInnerObject = 0xFFFFFF00u;

  Proxy(CallFaults& faults, IZyObject* inner, Lifetime lifetime)
      : faults_(faults), inner_(inner), lifetime_(lifetime) {}
  ~Proxy() { inner_->Release(); }

  void AddRef() override;
  void Release() override;
  void* Interface(std::uint32_t id) override;

  CallFaults& Faults() { return faults_; }

 private:
  CallFaults& faults_;
  IZyObject* inner_;  // one reference is this proxy's
  Lifetime lifetime_;
  std::size_t references_ = 0;
  std::map<std::uint32_t, MadePart> parts_;
};

// The inner object's interface behind an argument; null for null, and an object of the plug-in's own as it is.
template <class T>
T* InnerOf(T* object) {
  if (!object) return nullptr;
  auto* inner = static_cast<IZyObject*>(object->Interface(Proxy::kInnerObject));
  if (!inner) return object;
  if constexpr (std::same_as<T, IZyObject>)
    return inner;
  else
    return static_cast<T*>(inner->Interface(T::kId));
}

// An argument as the inner host expects it: its own object for an interface pointer, else as it is.
template <class Parameter, class Argument>
decltype(auto) Unwrapped(Argument& argument) {
  if constexpr (std::is_pointer_v<Parameter> && std::derived_from<std::remove_pointer_t<Parameter>, IZyObject>)
    return InnerOf(argument);
  else
    return (argument);
}

template <class I>
class Part : public I, public AnyPart {
 public:
  using Host = I;

  void Attach(Proxy& owner, I& inner) {
    owner_ = &owner;
    inner_ = &inner;
  }

  void AddRef() override { owner_->AddRef(); }
  void Release() override { owner_->Release(); }
  void* Interface(std::uint32_t id) override { return owner_->Interface(id); }

 protected:
  template <class Result, class... Parameters, class... Arguments>
  Result Call(Result (I::*operation)(Parameters...), Arguments&&... arguments) {
    if (owner_->Faults().CountAndTest()) {
      if constexpr (std::same_as<Result, zyresult>) return ZYe_FAILED;
      return Result();
    }
    return (inner_->*operation)(Unwrapped<Parameters>(arguments)...);
  }

  // For operations whose plain number has the type of a result code.
  template <class... Parameters>
  std::int32_t CallNumber(std::int32_t (I::*operation)(Parameters...), Parameters... arguments) {
    return owner_->Faults().CountAndTest() ? 0 : (inner_->*operation)(Unwrapped<Parameters>(arguments)...);
  }

  // For operations whose last output is a result object.
  template <class... Parameters, class... Arguments>
  zyresult CallFor(IZyObject*& out, zyresult (I::*operation)(Parameters...), Arguments&&... arguments) {
    IZyObject* made = nullptr;
    const zyresult result = Call(operation, arguments..., made);
    if (ZySucceeded(result) && made) out = owner_->Faults().Wrap(made);
    return result;
  }

 private:
  Proxy* owner_ = nullptr;
  I* inner_ = nullptr;
};

template <class P>
MadePart MakePart(Proxy& owner, void* inner) {
  using Interface = typename P::Host;
  auto part = std::make_unique<P>();
  part->Attach(owner, *static_cast<Interface*>(inner));
  void* asInterface = static_cast<Interface*>(part.get());
  return {std::move(part), asInterface};
}

template <class P>
constexpr PartRow RowOf() {
  return {P::Host::kId, &MakePart<P>};
}

std::span<const PartRow> SceneParts();
std::span<const PartRow> MeshParts();
std::span<const PartRow> ServiceParts();
std::span<const PartRow> ConfigParts();

}  // namespace test_support
