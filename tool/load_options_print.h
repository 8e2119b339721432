// Load options as text, for people and for scripts.
#pragma once

#include "tool/load_options_dialog.h"

#include <string>
#include <vector>

namespace tool {

// A line an option with its value, and below it what else may be chosen.
std::string LoadOptionsText(const std::vector<LoadOptionView>& options);

// An object with a member an option, in the order of the dialog:
//   "importUnits": {"type": "integer", "value": 3, "enabled": true, "choice": "Centimeters [cm]",
//                   "choices": [{"value": 0, "text": "Use FBX file units"}, ...]}
// "choice" is missing when the value is none of the choices, and both are where there are none.
std::string LoadOptionsJson(const std::vector<LoadOptionView>& options);

}  // namespace tool
