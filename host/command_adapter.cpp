#include "host/command_adapter.h"

#include <string_view>

zyresult CZyDynamicAttributes::Name(std::uint32_t index, const char*& text) const {
  if (index >= Count()) return ZYe_OUT_OF_BOUNDS;
  text = arguments_[index].name;
  return ZYe_OK;
}

zyresult CZyDynamicAttributes::TypeName(std::uint32_t index, const char*& text) const {
  if (index >= Count()) return ZYe_OUT_OF_BOUNDS;
  text = arguments_[index].type;
  return ZYe_OK;
}

zyresult CZyDynamicAttributes::TextHints(std::uint32_t index, const ZyTextHint*& table) const {
  if (index >= Count()) return ZYe_OUT_OF_BOUNDS;
  if (!arguments_[index].textHints) return ZYe_FAILED;
  table = arguments_[index].textHints;
  return ZYe_OK;
}

zyresult CZyDynamicAttributes::SetInt(std::uint32_t index, std::int32_t value) {
  if (index >= Count()) return ZYe_OUT_OF_BOUNDS;
  const std::string_view type = arguments_[index].type;
  if (type == "float") return ZYe_FAILED;
  arguments_[index].value = type == "boolean" ? static_cast<std::int32_t>(value != 0) : value;
  return ZYe_OK;
}

zyresult CZyDynamicAttributes::SetDouble(std::uint32_t index, double value) {
  if (index >= Count()) return ZYe_OUT_OF_BOUNDS;
  if (std::string_view(arguments_[index].type) != "float") return ZYe_FAILED;
  arguments_[index].value = value;
  return ZYe_OK;
}
