// Makes a command class T a server: its three interfaces, and the factory that makes its objects.
#pragma once

#include "host/call_guard.h"
#include "host/command_server.h"
#include "host/counted_object.h"
#include "host/module_api.h"

#include <variant>
#include <vector>

class CZyUser_UIHints : public CountedRef<IZyUIHints> {
 public:
  zyresult SetMinimum(std::int32_t value) const { return Call(&IZyUIHints::SetMinimum, value); }
  zyresult SetMaximum(std::int32_t value) const { return Call(&IZyUIHints::SetMaximum, value); }
  zyresult SetClass(const char* name) const { return Call(&IZyUIHints::SetClass, name); }
  zyresult AddText(const char* text) const { return Call(&IZyUIHints::AddText, text); }
};

// Arguments that are added one by one. They begin unset; see IZyServerAttributes for the results.
class CZyDynamicAttributes {
 public:
  virtual ~CZyDynamicAttributes() = default;

  // Texts and tables outlive the object. Arguments count from 0 in the order in which they are added.
  void Add(const char* name, const char* type) { arguments_.push_back({name, type, nullptr, {}}); }
  void SetTextHints(std::uint32_t index, const ZyTextHint* table) { arguments_[index].textHints = table; }

  std::uint32_t Count() const { return static_cast<std::uint32_t>(arguments_.size()); }
  zyresult Name(std::uint32_t index, const char*& text) const;
  zyresult TypeName(std::uint32_t index, const char*& text) const;
  zyresult TextHints(std::uint32_t index, const ZyTextHint*& table) const;
  zyresult GetInt(std::uint32_t index, std::int32_t& value) const { return Get(index, value); }
  zyresult SetInt(std::uint32_t index, std::int32_t value);
  zyresult GetDouble(std::uint32_t index, double& value) const { return Get(index, value); }
  zyresult SetDouble(std::uint32_t index, double value);

 private:
  struct Argument {
    const char* name;
    const char* type;
    const ZyTextHint* textHints;
    std::variant<std::monostate, std::int32_t, double> value;
  };

  template <class T>
  zyresult Get(std::uint32_t index, T& value) const {
    if (index >= Count()) return ZYe_OUT_OF_BOUNDS;
    const T* stored = std::get_if<T>(&arguments_[index].value);
    if (!stored) return ZYe_FAILED;
    value = *stored;
    return ZYe_OK;
  }

  std::vector<Argument> arguments_;
};

class CZyBasicCommand : public CZyDynamicAttributes {
 public:
  virtual std::uint32_t Flags() { return 0; }
  virtual zyresult ArgumentEnable(std::uint32_t) { return ZYe_OK; }
  virtual void UIHints(std::uint32_t, const CZyUser_UIHints&) {}
  virtual void DialogInit() {}
  virtual void Execute() = 0;
};

// Forwards to the attributes that Derived::Attributes() gives. No exception leaves it.
template <class Derived>
class CZyIfc_Attributes : public IZyServerAttributes {
 public:
  std::uint32_t Count() override { return Attributes().Count(); }
  zyresult Name(std::uint32_t index, const char*& text) override {
    return GuardedCall([&] { return Attributes().Name(index, text); });
  }
  zyresult TypeName(std::uint32_t index, const char*& text) override {
    return GuardedCall([&] { return Attributes().TypeName(index, text); });
  }
  zyresult TextHints(std::uint32_t index, const ZyTextHint*& table) override {
    return GuardedCall([&] { return Attributes().TextHints(index, table); });
  }
  zyresult GetInt(std::uint32_t index, std::int32_t& value) override {
    return GuardedCall([&] { return Attributes().GetInt(index, value); });
  }
  zyresult SetInt(std::uint32_t index, std::int32_t value) override {
    return GuardedCall([&] { return Attributes().SetInt(index, value); });
  }
  zyresult GetDouble(std::uint32_t index, double& value) override {
    return GuardedCall([&] { return Attributes().GetDouble(index, value); });
  }
  zyresult SetDouble(std::uint32_t index, double value) override {
    return GuardedCall([&] { return Attributes().SetDouble(index, value); });
  }

 protected:
  ~CZyIfc_Attributes() = default;

 private:
  decltype(auto) Attributes() { return static_cast<Derived*>(this)->Attributes(); }
};

// Holds one T and forwards the host's calls to it. No exception leaves it.
template <class T>
class CZyIfc_Command
    : public CountedObject<IZyCommandServer, CZyIfc_Attributes<CZyIfc_Command<T>>, IZyAttributesUI> {
 public:
  CZyDynamicAttributes& Attributes() { return command_; }

  std::uint32_t Flags() override { return command_.Flags(); }
  zyresult ArgumentEnable(std::uint32_t index) override {
    return index < command_.Count() ? command_.ArgumentEnable(index) : ZYe_OUT_OF_BOUNDS;
  }
  zyresult DialogInit() override {
    return GuardedCall([this] { return command_.DialogInit(), ZYe_OK; });
  }
  zyresult Execute() override {
    return GuardedCall([this] { return command_.Execute(), ZYe_OK; });
  }
  zyresult UIHints(std::uint32_t index, IZyUIHints* hints) override {
    if (index >= command_.Count()) return ZYe_OUT_OF_BOUNDS;
    CZyUser_UIHints wrapper;
    if (!wrapper.Set(hints)) return ZYe_NO_INTERFACE;
    return GuardedCall([&] { return command_.UIHints(index, wrapper), ZYe_OK; });
  }

 private:
  T command_;
};

template <class T>
class CommandFactory : public CountedObject<IZyFactory> {
 public:
  std::uint32_t InterfaceCount() override { return 3; }
  zyresult InterfaceByIndex(std::uint32_t index, std::uint32_t& id) override {
    constexpr std::uint32_t kIds[] = {IZyCommandServer::kId, IZyServerAttributes::kId, IZyAttributesUI::kId};
    if (index >= 3) return ZYe_OUT_OF_BOUNDS;
    id = kIds[index];
    return ZYe_OK;
  }
  zyresult Spawn(IZyObject*& object) override {
    return GuardedCall([&] {
      object = static_cast<IZyCommandServer*>(new CZyIfc_Command<T>);
      return ZYe_OK;
    });
  }
};
