// Commands that a module offers, as the host calls them. (command_api.h is for the commands that the host offers.)
#pragma once

#include "host/object.h"

struct IZyCommandServer : IZyObject {
  static constexpr std::uint32_t kId = 0x606;

  virtual std::uint32_t Flags() = 0;
  // ZYe_OK when the argument is enabled, with the other arguments as they stand; ZYe_DISABLED when it isn't.
  virtual zyresult ArgumentEnable(std::uint32_t index) = 0;
  // Sets the arguments to what a dialog starts from.
  virtual zyresult DialogInit() = 0;
  virtual zyresult Execute() = 0;

 protected:
  ~IZyCommandServer() = default;
};

// One choice of an argument; a table of them ends at the value -1.
struct ZyTextHint {
  std::int32_t value;
  const char* text;
};

// Arguments with names, types and values. The type is a word, "boolean", "integer" or "float"; a boolean is read
// and set as an integer, 0 or 1. An index at or past the count gives ZYe_OUT_OF_BOUNDS; a value of another type,
// or one that was never set, ZYe_FAILED.
struct IZyServerAttributes : IZyObject {
  static constexpr std::uint32_t kId = 0x607;

  virtual std::uint32_t Count() = 0;
  virtual zyresult Name(std::uint32_t index, const char*& text) = 0;
  virtual zyresult TypeName(std::uint32_t index, const char*& text) = 0;
  // The choices of an argument; fails when it has none.
  virtual zyresult TextHints(std::uint32_t index, const ZyTextHint*& table) = 0;
  virtual zyresult GetInt(std::uint32_t index, std::int32_t& value) = 0;
  virtual zyresult SetInt(std::uint32_t index, std::int32_t value) = 0;
  virtual zyresult GetDouble(std::uint32_t index, double& value) = 0;
  virtual zyresult SetDouble(std::uint32_t index, double value) = 0;

 protected:
  ~IZyServerAttributes() = default;
};

// What the host wants to know of an argument before it shows it.
struct IZyUIHints : IZyObject {
  static constexpr std::uint32_t kId = 0x608;

  virtual zyresult SetMinimum(std::int32_t value) = 0;
  virtual zyresult SetMaximum(std::int32_t value) = 0;
  // The class of the control, "iPopChoice" for a popup of texts.
  virtual zyresult SetClass(const char* name) = 0;
  // Adds a text to the list of a popup.
  virtual zyresult AddText(const char* text) = 0;

 protected:
  ~IZyUIHints() = default;
};

struct IZyAttributesUI : IZyObject {
  static constexpr std::uint32_t kId = 0x609;

  // Tells the hints of an argument, none for most.
  virtual zyresult UIHints(std::uint32_t index, IZyUIHints* hints) = 0;

 protected:
  ~IZyAttributesUI() = default;
};
