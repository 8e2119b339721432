// The server "loaderOptions.gltf": a dialog of load options, and the object that carries them.
#pragma once

#include "host/command_adapter.h"
#include "host/stream_adapter.h"
#include "options/load_options.h"

inline constexpr char kLoadOptionsServer[] = "loaderOptions.gltf";

class LoadOptionsIO : public CZyImpl_StreamIO {
 public:
  static constexpr std::uint32_t kId = 0x901;

  zyresult Write(const CZyUser_BlockWriter& writer) override;
  zyresult Read(const CZyUser_BlockReader& reader) override;

  LoadOptions options;
};

class LoadOptionsCmd : public CZyBasicCommand {
 public:
  LoadOptionsCmd();

  std::uint32_t Flags() override;
  zyresult ArgumentEnable(std::uint32_t index) override;
  void UIHints(std::uint32_t index, const CZyUser_UIHints& hints) override;
  void DialogInit() override;
  // Has no failure of its own.
  void Execute() override;

 private:
  bool IsOn(std::uint32_t index) const;
};

// What the module keeps for the load options from its making to its end: the polymorph of LoadOptionsIO, and the
// configuration once there is one. They are one of each in a module, however many of these there are.
class LoadOptionsRegistration {
 public:
  LoadOptionsRegistration();
  ~LoadOptionsRegistration();
  LoadOptionsRegistration(const LoadOptionsRegistration&) = delete;
  LoadOptionsRegistration& operator=(const LoadOptionsRegistration&) = delete;
};

// For a loader. The first fills the options from the configuration alone; the second copies the options object
// that the I/O service holds, and turns to the configuration when it holds none of this module's.
void FetchStoredLoadOptions(LoadOptions& options);
void FetchCurrentLoadOptions(LoadOptions& options);
