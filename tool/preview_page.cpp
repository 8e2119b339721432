#include "tool/preview_page.h"

#include "readers/mapped_file.h"
#include "readers/program_files.h"
#include "readers/read_scene.h"
#include "tool/base64.h"
#include "tool/model_file.h"
#include "tool/output_check.h"
#include "tool/output_error.h"
#include "tool/staging.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <span>
#include <string_view>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostWarnings = 1000;
constexpr std::size_t kPieceSize = 12u << 20;  // a multiple of 3, so that pieces end without padding
constexpr std::string_view kFactsMark = "<!--vornel:facts-->";
constexpr std::string_view kModelMark = "<!--vornel:model-->";

// What stands before, between and behind the places that the command fills.
struct Template {
  std::string head, middle, tail;
};

Template ReadTemplate() {
  const fs::path file = readers::ShareDirectory() / "preview.html";
  try {
    const auto mapped = readers::MappedFile::Open(file);
    const std::string_view text(mapped->Begin(), mapped->Bytes().size());
    const std::size_t facts = text.find(kFactsMark);
    const std::size_t model = text.find(kModelMark);
    if (facts < model && model != std::string_view::npos)
      return {std::string(text.substr(0, facts)),
              std::string(text.substr(facts + kFactsMark.size(), model - facts - kFactsMark.size())),
              std::string(text.substr(model + kModelMark.size()))};
  } catch (const readers::InputError& error) {
    throw OutputError(std::string("the installation lacks the viewer for pages: ") + error.what());
  }
  throw OutputError(file.string() + ": not a template of pages");
}

// A JSON text that can't end the element it stands in, whatever it says.
std::string JsonText(std::string_view text) {
  std::string quoted = "\"";
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x20 || code == 0x7F || std::string_view("\"\\<>&'").find(character) != std::string_view::npos)
      quoted += fmt::format("\\u{:04x}", code);
    else
      quoted += character;
  }
  return quoted + "\"";
}

std::string FactsText(const ModelFile& model, const std::vector<std::string>& warnings) {
  const auto list = [](const auto& entries, std::size_t count, const auto& textOf) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += (i == 0 ? "" : ",") + textOf(entries[i]);
    return "[" + text + "]";
  };
  const std::size_t shown = std::min(warnings.size(), kMostWarnings);
  return fmt::format(R"({{"name":{},"version":{},"modelBytes":{},"files":{},"warnings":{},"warningsLeftOut":{}}})",
                     JsonText(model.files.front().name), JsonText(VORNEL_VERSION), model.glb.size(),
                     list(model.files, model.files.size(),
                          [](const ReadFile& file) {
                            return fmt::format(R"({{"name":{},"bytes":{}}})", JsonText(file.name), file.size);
                          }),
                     list(warnings, shown, JsonText), warnings.size() - shown);
}

void WriteModel(std::ostream& stream, std::span<const char> glb) {
  while (!glb.empty()) {
    const std::size_t size = std::min(glb.size(), kPieceSize);
    stream << "<script type=\"text/plain\" class=\"model\">" << EncodeBase64(glb.first(size)) << "</script>\n";
    glb = glb.subspan(size);
  }
}

void CheckInputStays(const ModelFile& model, const fs::path& page) {
  for (const ReadFile& file : model.files) {
    std::error_code none;
    if (fs::equivalent(page, file.path, none))
      throw OutputError(page.string() + ": would be written over, but the model is read from it");
  }
}

}  // namespace

void WritePreviewPage(const fs::path& model, const fs::path& page, const std::vector<std::string>& warnings) {
  const Template text = ReadTemplate();
  const ModelFile read = ReadModelFile(model);
  CheckInputStays(read, page);
  std::vector<std::string> all = warnings;
  all.insert(all.end(), read.warnings.begin(), read.warnings.end());

  Staging staging(page);
  const fs::path staged = staging.Directory() / page.filename();
  std::ofstream stream(staged, std::ios::binary);
  stream << text.head << FactsText(read, all) << text.middle;
  WriteModel(stream, read.glb);
  stream << text.tail;
  stream.close();
  if (!stream) throw OutputError(page.string() + ": " + FindWriteFault(staged).value_or("can't be written"));
  staging.MoveIntoPlace();
}

}  // namespace tool
