#include "producer/json_reader.h"

#include <algorithm>
#include <cmath>

#include "core/api.h"

namespace oxelsim {

namespace {

std::string EscapePointerToken(const std::string& key) {
  std::string token;
  for (char c : key) {
    if (c == '~') {
      token += "~0";
    } else if (c == '/') {
      token += "~1";
    } else {
      token += c;
    }
  }
  return token;
}

}  // namespace

void FailLoading(const std::string& file, const std::string& what) {
  Fail(OXEL_RETURN_CODE_CTI_LOADING_ERROR, "Cannot load producer file '" + file + "': " + what);
}

JsonReader::JsonReader(const nlohmann::json& value, std::string pointer, const std::string& file)
    : value_(&value), pointer_(std::move(pointer)), file_(&file) {}

void JsonReader::Fail(const std::string& expected) const {
  FailLoading(*file_, "at " + (pointer_.empty() ? std::string("the top level") : pointer_) +
                          ": expected " + expected + ", found " + Found());
}

void JsonReader::Refuse(const std::string& what) const {
  FailLoading(*file_,
              "at " + (pointer_.empty() ? std::string("the top level") : pointer_) + ": " + what);
}

std::string JsonReader::Found() const {
  std::string text = value_->dump();
  if (text.size() > 60) text = text.substr(0, 57) + "...";
  return text;
}

JsonReader JsonReader::Member(const std::string& key) const {
  std::optional<JsonReader> member = Optional(key);
  if (!member) {
    FailLoading(*file_, "at " + (pointer_.empty() ? std::string("the top level") : pointer_) +
                            ": missing member \"" + key + "\"");
  }
  return *member;
}

std::optional<JsonReader> JsonReader::Optional(const std::string& key) const {
  if (!value_->is_object()) Fail("an object");
  auto found = value_->find(key);
  if (found == value_->end()) return std::nullopt;
  return JsonReader(*found, pointer_ + "/" + EscapePointerToken(key), *file_);
}

void JsonReader::AllowOnly(std::initializer_list<const char*> known) const {
  if (!value_->is_object()) Fail("an object");
  for (const auto& item : value_->items()) {
    const bool listed = std::any_of(known.begin(), known.end(),
                                    [&](const char* name) { return item.key() == name; });
    if (!listed) {
      std::string names;
      for (const char* name : known) names += std::string(names.empty() ? "" : ", ") + name;
      FailLoading(*file_, "at " + pointer_ + "/" + EscapePointerToken(item.key()) +
                              ": unknown member \"" + item.key() + "\" (known members: " + names +
                              ")");
    }
  }
}

std::vector<std::string> JsonReader::Keys() const {
  if (!value_->is_object()) Fail("an object");
  std::vector<std::string> keys;
  for (const auto& item : value_->items()) keys.push_back(item.key());
  return keys;
}

std::string JsonReader::String() const {
  if (!value_->is_string()) Fail("a text");
  return value_->get<std::string>();
}

std::string JsonReader::NonEmptyString() const {
  std::string text = String();
  if (text.empty()) Fail("a text that is not empty");
  return text;
}

int64_t JsonReader::Integer() const {
  if (value_->is_number_integer()) return value_->get<int64_t>();
  if (value_->is_number_float()) {
    const double number = value_->get<double>();
    if (std::nearbyint(number) == number && std::fabs(number) < 9.0e18) {
      return static_cast<int64_t>(number);
    }
  }
  Fail("an integer");
}

int64_t JsonReader::Positive() const {
  const int64_t number = Integer();
  if (number <= 0) Fail("a positive integer");
  return number;
}

int64_t JsonReader::NonNegative() const {
  const int64_t number = Integer();
  if (number < 0) Fail("an integer of 0 or more");
  return number;
}

double JsonReader::Number() const {
  if (!value_->is_number()) Fail("a number");
  return value_->get<double>();
}

bool JsonReader::Boolean() const {
  if (!value_->is_boolean()) Fail("true or false");
  return value_->get<bool>();
}

std::vector<JsonReader> JsonReader::Array() const {
  if (!value_->is_array()) Fail("an array");
  std::vector<JsonReader> items;
  for (size_t i = 0; i < value_->size(); ++i) {
    items.emplace_back((*value_)[i], pointer_ + "/" + std::to_string(i), *file_);
  }
  return items;
}

std::string JsonReader::Choice(std::initializer_list<const char*> choices) const {
  std::string names;
  for (const char* choice : choices) names += std::string(names.empty() ? "" : ", ") + choice;
  if (!value_->is_string()) Fail("one of " + names);
  const std::string text = value_->get<std::string>();
  for (const char* choice : choices) {
    if (text == choice) return text;
  }
  Fail("one of " + names);
}

}  // namespace oxelsim
