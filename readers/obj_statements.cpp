#include "readers/obj_statements.h"

#include "readers/text_numbers.h"
#include "readers/text_utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace readers {
namespace {

constexpr StatementWord kStatementWords[] = {
    {"v", Statement::Point},
    {"vt", Statement::Uv},
    {"vn", Statement::Normal},
    {"f", Statement::Face},
    {"o", Statement::Object},
    {"g", Statement::Group},
    {"usemtl", Statement::Material},
    {"mtllib", Statement::Library},
    {"s", Statement::Smoothing},
    {"l", Statement::Skip, Skipped::Lines},
    {"p", Statement::Skip, Skipped::PointStatements},
    {"vp", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"cstype", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"deg", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"bmat", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"step", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"curv", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"curv2", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"surf", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"parm", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"trim", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"hole", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"scrv", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"sp", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"end", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"con", Statement::Skip, Skipped::CurvesAndSurfaces},
    {"mg", Statement::Skip, Skipped::DisplayStatements},
    {"bevel", Statement::Skip, Skipped::DisplayStatements},
    {"c_interp", Statement::Skip, Skipped::DisplayStatements},
    {"d_interp", Statement::Skip, Skipped::DisplayStatements},
    {"lod", Statement::Skip, Skipped::DisplayStatements},
    {"shadow_obj", Statement::Skip, Skipped::DisplayStatements},
    {"trace_obj", Statement::Skip, Skipped::DisplayStatements},
    {"ctech", Statement::Skip, Skipped::DisplayStatements},
    {"stech", Statement::Skip, Skipped::DisplayStatements},
    {"maplib", Statement::Skip, Skipped::DisplayStatements},
    {"usemap", Statement::Skip, Skipped::DisplayStatements},
    {"call", Statement::Skip, Skipped::Calls},
    {"csh", Statement::Skip, Skipped::Calls},
};

struct SkippedWords {
  const char* one;
  const char* many;
};

constexpr SkippedWords kSkippedWords[] = {
    {"line", "lines"},
    {"point statement", "point statements"},
    {"curve or surface statement", "curve or surface statements"},
    {"display statement", "display statements"},
    {"call", "calls"},
    {"face with fewer than 3 corners", "faces with fewer than 3 corners"},
    {"broken exponent", "broken exponents"},
    {"unknown statement", "unknown statements"},
};
static_assert(std::size(kSkippedWords) == static_cast<std::size_t>(Skipped::Count));

}  // namespace

StatementWord FindStatement(std::string_view word) {
  const auto* found = std::find_if(std::begin(kStatementWords), std::end(kStatementWords),
                                   [&](const StatementWord& entry) { return entry.word == word; });
  return found == std::end(kStatementWords) ? StatementWord{word} : *found;
}

std::string StatementText(const char* text) {
  std::string joined;
  const char* const end = SkipStatement(text);
  for (text = SkipBlanks(text); text < end;) {
    const char* next = SkipContinuation(text);
    joined += next ? ' ' : *text;
    text = next ? next : text + 1;
  }
  while (!joined.empty() && EndsToken(joined.back())) joined.pop_back();
  return ToUtf8(std::move(joined));
}

std::string DescribeSkipped(const ObjData& data) {
  std::string description;
  for (std::size_t i = 0; i < data.skipped.size(); ++i) {
    const std::uint64_t count = data.skipped[i];
    if (count == 0) continue;
    const char* words = count == 1 ? kSkippedWords[i].one : kSkippedWords[i].many;
    description += fmt::format("{}{} {}", description.empty() ? "skipped " : ", ", count, words);
  }
  if (!data.firstUnknown.empty()) description += fmt::format(" (first \"{}\")", data.firstUnknown);
  return description;
}

}  // namespace readers
