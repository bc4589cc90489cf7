// SPDX-License-Identifier: MIT
//
// JSON that an earlier run wrote, read as if anybody had written it.
#ifndef LUX_CLI_JSON_FILE_H
#define LUX_CLI_JSON_FILE_H

#include "cli/cli.h"

// What a file has instead of what it should have; whoever reads the file adds its name.
struct BadField : std::runtime_error {
  using std::runtime_error::runtime_error;
};

Json parse_json(const std::string& text);

// The object's member of that name, of that kind and in those bounds, or else a BadField.
const Json& member(const Json& object, const char* key);
const Json& array_in(const Json& object, const char* key);
const Json& object_in(const Json& object, const char* key);
std::string text_in(const Json& object, const char* key);
double number_in(const Json& object, const char* key);
int64_t whole_in(const Json& object, const char* key, int64_t least, int64_t most);
bool flag_in(const Json& object, const char* key);

#endif
