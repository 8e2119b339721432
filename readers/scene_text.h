// The text of a scene file as it is written: JSON with the line breaks of a person's hand.
#pragma once

#include "readers/output_file.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace readers {

// What can't stand in a scene file; the reason, without file and place.
struct WriteFault {
  std::string reason;
};

// A text as a scene file can hold it and a host would read it: up to the first zero character, and when it isn't
// UTF-8, read as Latin-1.
std::string FileText(const std::string& text);

// How the entries of an object or list are set.
enum class Layout {
  Lines,   // each on a line of its own
  Filled,  // as many on a line as fit
  Tight    // all on one line, without blanks
};

// Puts JSON values one after the other, with commas and indents. The caller keeps begins and ends in pairs.
class SceneText {
 public:
  explicit SceneText(const std::filesystem::path& file) : file_(file) {}

  void BeginObject(Layout layout) { Begin('{', layout); }
  void EndObject() { End('}'); }
  void BeginList(Layout layout) { Begin('[', layout); }
  void EndList() { End(']'); }
  // The next entry of a filled object or list starts a line.
  void Break() { breaks_ = true; }

  void Key(std::string_view key);
  void Null() { Raw("null"); }
  void Bool(bool value) { Raw(value ? "true" : "false"); }
  void Whole(std::int64_t value) { Raw(std::to_string(value)); }
  void Natural(std::uint64_t value);
  // The shortest text that is read back as the same number. Throws a WriteFault when it isn't finite.
  void Number(double value);
  void Number(float value);
  // Likewise, in a form that no reader takes for an integer.
  void Real(double value);
  void Text(const std::string& text);

  // Ends the file. Throws SceneWriteError, as all of the above do, when something can't be written.
  void Close();

 private:
  struct Level {
    char bracket;
    Layout layout;
    bool isEmpty = true;
  };

  void Begin(char bracket, Layout layout);
  void End(char bracket);
  void Separate();
  void NewLine();
  void Raw(std::string_view text);
  void Quote(std::string_view text);
  void Put(std::string_view text);
  void Flush();

  OutputFile file_;
  std::string waiting_;  // not yet written to the file
  std::vector<Level> levels_;
  std::size_t column_ = 0;
  bool hasKey_ = false;  // the next value belongs to a key that is written
  bool breaks_ = false;
};

}  // namespace readers
