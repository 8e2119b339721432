// A visitor made of a function.
#pragma once

#include "host/mesh_api.h"

#include <functional>
#include <utility>

namespace test_support {

struct Visitor final : CZyImpl_AbstractVisitor {
  explicit Visitor(std::function<zyresult()> visit) : action(std::move(visit)) {}
  zyresult Evaluate() override { return action(); }

  std::function<zyresult()> action;
};

}  // namespace test_support
