#include "readers/mapped_file.h"
#include "readers/mtl_scene.h"
#include "readers/obj_meshes.h"
#include "readers/obj_parser.h"
#include "readers/obj_statements.h"
#include "readers/read_scene.h"
#include "readers/text_utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace readers {
namespace {

using headless::AddItem;
using headless::ItemIndex;
using headless::MakeScene;
using headless::SceneData;

std::string_view TextOf(const MappedFile& file) {
  return {file.Begin(), static_cast<std::size_t>(file.End() - file.Begin())};
}

// The words of an mtllib from `first` on that make the path of a file, as many as possible: names may hold
// blanks, and there may be several. 0 when there is no such file.
std::size_t CountNameWords(const std::vector<std::string>& words, std::size_t first,
                           const std::filesystem::path& directory) {
  constexpr std::size_t kMostWords = 32;
  std::string name;
  std::size_t found = 0;
  for (std::size_t i = first; i < words.size() && i < first + kMostWords; ++i) {
    name += (i == first ? "" : " ") + words[i];
    std::error_code error;
    if (std::filesystem::is_regular_file(directory / name, error)) found = i - first + 1;
  }
  return found;
}

std::string Join(const std::vector<std::string>& words, std::size_t first, std::size_t count) {
  std::string text = words[first];
  for (std::size_t i = first + 1; i < first + count; ++i) text += ' ' + words[i];
  return text;
}

// The material libraries of one OBJ file.
class Libraries {
 public:
  Libraries(SceneData& scene, const std::filesystem::path& directory, ReadReport& report)
      : materials_(scene), directory_(directory), report_(report) {}

  // `names` is what stands behind mtllib.
  void Add(const std::string& names);
  // Tells of tags without a material, once a library is there.
  void CheckTags(const std::string& fileName, const std::vector<std::string>& tags) const;

 private:
  void Read(const std::string& name);

  MaterialBuilder materials_;
  std::filesystem::path directory_;
  ReadReport& report_;
  std::set<std::string> known_;  // named before, whether found or not
  bool found_ = false;
};

void Libraries::Add(const std::string& names) {
  std::string paths = names;
  std::replace(paths.begin(), paths.end(), '\\', '/');
  std::istringstream stream(paths);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(std::move(word));

  std::string missing;
  for (std::size_t i = 0; i < words.size();) {
    const std::size_t count = CountNameWords(words, i, directory_);
    if (count > 0) {
      const std::string name = Join(words, i, count);
      if (known_.insert(name).second) Read(name);
    } else {
      missing += (missing.empty() ? "" : " ") + words[i];
      report_.missing.push_back((directory_ / words[i]).lexically_normal());
    }
    i += std::max<std::size_t>(count, 1);
  }
  if (!missing.empty() && known_.insert(missing).second) {
    report_.missing.push_back((directory_ / missing).lexically_normal());
    report_.warnings.push_back(fmt::format("material library not found: {}", report_.missing.back().string()));
  }
}

void Libraries::Read(const std::string& name) {
  const std::filesystem::path path = (directory_ / name).lexically_normal();
  MtlFile file;
  try {
    file = ParseMtl(TextOf(*MappedFile::Open(path)));
  } catch (const InputError& error) {
    report_.warnings.push_back(error.what());
    report_.missing.push_back(path);
    return;
  }
  found_ = true;
  report_.files.push_back(path);
  materials_.Add(file, std::filesystem::path(name).parent_path());
  if (file.badStatements > 0) {
    report_.warnings.push_back(fmt::format("{}:{}: {}; {} such statement{} skipped", path.string(),
                                           file.firstBadLine, file.firstBadReason, file.badStatements,
                                           file.badStatements == 1 ? "" : "s"));
  }
  std::string skipped;
  for (const auto& [what, count] : file.skipped)
    skipped += fmt::format("{} {} {}", skipped.empty() ? "" : ",", count, what);
  if (!skipped.empty()) report_.warnings.push_back(fmt::format("{}: skipped{}", path.string(), skipped));
}

void Libraries::CheckTags(const std::string& fileName, const std::vector<std::string>& tags) const {
  if (!found_) return;
  std::size_t count = 0;
  std::string first;
  for (const std::string& tag : tags) {
    if (tag == kDefaultMaterial || materials_.HasMaterial(tag)) continue;
    if (count++ == 0) first = tag;
  }
  if (count == 0) return;
  report_.warnings.push_back(fmt::format("{}: {} material{} in no library (first \"{}\")", fileName, count,
                                         count == 1 ? " is" : "s are", first));
}

ObjData ParseFile(const std::filesystem::path& file) {
  const auto mapping = MappedFile::Open(file);
  return ParseObj(TextOf(*mapping), file.string(), ToUtf8(file.stem().string()));
}

}  // namespace

SceneData ReadObj(const std::filesystem::path& file, ReadReport& report) {
  const std::string fileName = file.string();
  ObjData data = ParseFile(file);
  if (!data.hasStatements && data.skipped[static_cast<std::size_t>(Skipped::Unknown)] > 0) {
    throw InputError(fileName + ": holds no OBJ statement");
  }
  SceneData scene = MakeScene();
  scene.directory = file.parent_path().string();
  const auto meshes = BuildMeshes(data);
  for (std::size_t i = 0; i < meshes.size(); ++i) {
    const ItemIndex mesh = AddItem(scene, "mesh", data.meshes[i].name);
    scene.items[static_cast<std::size_t>(mesh)].mesh = meshes[i];
  }
  if (meshes.empty()) report.warnings.push_back(fileName + ": holds no polygons");
  if (const std::string skipped = DescribeSkipped(data); !skipped.empty()) {
    report.warnings.push_back(fileName + ": " + skipped);
  }
  Libraries libraries(scene, file.parent_path(), report);
  for (const std::string& names : data.libraries) libraries.Add(names);
  libraries.CheckTags(fileName, data.materialNames.Names());
  return scene;
}

}  // namespace readers
