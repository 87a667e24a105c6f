// Reading a producer file's JSON with errors that say where: every value is
// seen together with its JSON pointer, and every failure names the file, the
// pointer and what was expected there.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace oxelsim {

class JsonReader {
 public:
  JsonReader(const nlohmann::json& value, std::string pointer, const std::string& file);

  // A required member; fails when it is missing or this is not an object.
  JsonReader Member(const std::string& key) const;
  std::optional<JsonReader> Optional(const std::string& key) const;
  // Fails on any member not in `known`.
  void AllowOnly(std::initializer_list<const char*> known) const;
  std::vector<std::string> Keys() const;

  bool IsString() const { return value_->is_string(); }
  bool IsObject() const { return value_->is_object(); }
  bool IsArray() const { return value_->is_array(); }

  std::string String() const;
  std::string NonEmptyString() const;
  int64_t Integer() const;
  int64_t Positive() const;
  int64_t NonNegative() const;
  double Number() const;
  bool Boolean() const;
  std::vector<JsonReader> Array() const;
  // Fails unless the text is one of `choices`.
  std::string Choice(std::initializer_list<const char*> choices) const;

  const std::string& Pointer() const { return pointer_; }
  std::string Found() const;  // the value as it stands in the file, for texts
  [[noreturn]] void Fail(const std::string& expected) const;
  // "at <pointer>: <what>", for a value that reads well but does not fit.
  [[noreturn]] void Refuse(const std::string& what) const;

 private:
  const nlohmann::json* value_;
  std::string pointer_;
  const std::string* file_;
};

// "Cannot load producer file '<file>': <what>", as CTI_LOADING_ERROR.
[[noreturn]] void FailLoading(const std::string& file, const std::string& what);

}  // namespace oxelsim
