// JSON that is written once, from its start to its end.
#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Rounds to f32: prints with the digits of the double that equals the f32.
inline double AsF32(double value) {
  // Where g++ 12 vectorises a conversion there and back it leaves both out; it can't see through a volatile.
  volatile const float rounded = static_cast<float>(value);
  return static_cast<double>(rounded);
}

// A compact text. Reals have the shortest digits that read back the same double.
class JsonText {
 public:
  JsonText() : writer_(buffer_) {}
  JsonText(const JsonText&) = delete;
  JsonText& operator=(const JsonText&) = delete;

  void StartObject() { writer_.StartObject(); }
  void EndObject() { writer_.EndObject(); }
  void StartArray() { writer_.StartArray(); }
  void EndArray() { writer_.EndArray(); }

  void Key(std::string_view key) { writer_.Key(key.data(), static_cast<rapidjson::SizeType>(key.size())); }
  void Value(std::string_view text) { writer_.String(text.data(), static_cast<rapidjson::SizeType>(text.size())); }
  void Value(const std::string& text) { Value(std::string_view(text)); }
  void Value(const char* text) { Value(std::string_view(text)); }
  void Value(bool value) { writer_.Bool(value); }
  void Value(std::int32_t value) { writer_.Int(value); }
  void Value(std::uint32_t value) { writer_.Uint(value); }
  // A number that JSON can't say breaks the text off here.
  void Value(double value) {
    if (!writer_.Double(value) && !brokenAt_) brokenAt_ = buffer_.GetSize();
  }
  void Value(std::span<const double> numbers) {
    StartArray();
    for (const double number : numbers) Value(number);
    EndArray();
  }

  template <class T>
  void Member(std::string_view key, const T& value) {
    Key(key);
    Value(value);
  }

  bool IsBroken() const { return brokenAt_.has_value(); }
  // What is written so far, up to the place where it broke off.
  std::string_view Text() const { return {buffer_.GetString(), brokenAt_.value_or(buffer_.GetSize())}; }

 private:
  rapidjson::StringBuffer buffer_;
  rapidjson::Writer<rapidjson::StringBuffer> writer_;
  std::optional<std::size_t> brokenAt_;
};

// A text in pieces, which live elsewhere.
using JsonPieces = std::vector<std::string_view>;

// An array that grows element by element.
class JsonArray {
 public:
  JsonArray() { text_.StartArray(); }

  // The text for the next element, which is to be written whole before the one after it.
  JsonText& Append() {
    ++size_;
    return text_;
  }
  std::uint32_t Size() const { return size_; }
  std::string_view Text() const { return text_.Text(); }
  // Nothing may be appended afterwards.
  const JsonText& Close() {
    text_.EndArray();
    return text_;
  }

 private:
  JsonText text_;
  std::uint32_t size_ = 0;
};
