// SPDX-License-Identifier: MIT
// As much of JSON Schema as the schemas in docs/schemas/ use.
#pragma once

#include <algorithm>
#include <string>

#include "cli/json.h"

namespace hollin {

inline bool HasType(const std::string& type, const Json& json) {
  if (type == "integer") return json.is_number_integer();
  return (type == "object" && json.is_object()) || (type == "array" && json.is_array()) ||
         (type == "string" && json.is_string()) || (type == "boolean" && json.is_boolean()) ||
         (type == "null" && json.is_null());
}

inline std::string SchemaError(const Json& schema, const Json& json);

inline std::string ObjectError(const Json& schema, const Json& json) {
  for (const Json& key : schema.value("required", Json::array())) {
    if (!json.contains(key.get<std::string>())) return "lacks " + key.get<std::string>();
  }
  const Json properties = schema.value("properties", Json::object());
  for (const auto& [key, value] : json.items()) {
    if (!properties.contains(key)) {
      if (schema.value("additionalProperties", true)) continue;
      return "has " + key;
    }
    const std::string error = SchemaError(properties[key], value);
    if (!error.empty()) return std::string(key).append(": ").append(error);
  }
  return "";
}

inline std::string ArrayError(const Json& schema, const Json& json) {
  if (json.size() < schema.value("minItems", size_t{0})) return "has too few items";
  if (schema.contains("maxItems") && json.size() > schema["maxItems"].get<size_t>()) {
    return "has too many items";
  }
  for (const Json& item : json) {
    const std::string error = SchemaError(schema.value("items", Json::object()), item);
    if (!error.empty()) return "item: " + error;
  }
  return "";
}

inline std::string NumberError(const Json& schema, const Json& json) {
  const auto value = json.get<int64_t>();
  if (schema.contains("minimum") && value < schema["minimum"].get<int64_t>()) return "too small";
  if (schema.contains("maximum") && value > schema["maximum"].get<int64_t>()) return "too large";
  return "";
}

// What is wrong with a document; empty when it follows the schema.
inline std::string SchemaError(const Json& schema, const Json& json) {
  if (schema.contains("oneOf")) {
    const auto& choices = schema["oneOf"];
    const auto fits = std::count_if(choices.begin(), choices.end(), [&](const Json& choice) {
      return SchemaError(choice, json).empty();
    });
    return fits == 1 ? "" : "fits " + std::to_string(fits) + " choices";
  }
  if (schema.contains("enum")) {
    const auto& values = schema["enum"];
    return std::find(values.begin(), values.end(), json) != values.end() ? "" : "is no choice";
  }
  if (schema.contains("type")) {
    const Json types = schema["type"].is_array() ? schema["type"] : Json::array({schema["type"]});
    const bool isOfType = std::any_of(types.begin(), types.end(), [&](const Json& type) {
      return HasType(type.get<std::string>(), json);
    });
    if (!isOfType) return "is not of its type";
  }
  if (json.is_object()) return ObjectError(schema, json);
  if (json.is_array()) return ArrayError(schema, json);
  return json.is_number_integer() ? NumberError(schema, json) : "";
}

}  // namespace hollin
