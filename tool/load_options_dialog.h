// The dialog of the plug-in's load options, without a window: what it would show, and setting it by texts.
#pragma once

#include "host/command_server.h"
#include "host/object.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace headless {
class LoadedModule;
}

namespace tool {


// A load option as the dialog shows it.
struct LoadOptionView {
  enum class Type { Boolean, Integer, Float };

  std::string name;
  Type type = Type::Boolean;
  std::int32_t integer = 0;  // of a boolean too, 0 or 1
  double number = 0;         // of a float
  bool isEnabled = true;
  std::optional<std::int32_t> minimum, maximum;
  std::string controlClass;                                   // empty for the usual control of the type
  std::vector<std::pair<std::int32_t, std::string>> choices;  // those that the control lists

  // The text of the chosen one; null when there are no choices or the value isn't one of them.
  const std::string* Choice() const;
};

// A value that an option doesn't take. what() is one line that names the option.
class OptionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class LoadOptionsDialog {
 public:
  // Starts the dialog. Throws ModuleError. The module outlives the dialog.
  explicit LoadOptionsDialog(const headless::LoadedModule& module);

  std::vector<LoadOptionView> Options() const;
  // Booleans are on, off, true, false, 1 and 0; a choice is its number or its text. Throws OptionError.
  void Set(const std::string& name, const std::string& text);
  // Sets every option from the attributes of the same name. Throws OptionError for a value that can't be chosen.
  void SetAll(IZyServerAttributes& values);
  // Throws ModuleError.
  void Execute();

 private:
  LoadOptionView View(std::uint32_t index) const;
  std::uint32_t Find(const std::string& name) const;  // throws OptionError

  CountedRef<IZyCommandServer> command_;
  CountedRef<IZyServerAttributes> attributes_;
  CountedRef<IZyAttributesUI> ui_;
};

}  // namespace tool
