// SPDX-License-Identifier: MIT
//
// What the command writes as JSON: the names and versions of its documents, and their fields.
#ifndef LUX_CLI_JSON_FORMATS_H
#define LUX_CLI_JSON_FORMATS_H

#include "catalog/json.h"

#include <string>
#include <vector>

struct JsonField {
  const char *path, *meaning;  // rows[].n: of each element of a list; a.*: of every member
};

struct JsonFormat {
  const char* name;  // luxvm-bench
  int version;  // changes when a field goes or comes to mean something else, not when one is new
  const char* written_by;
  std::vector<JsonField> fields;
};

const std::vector<JsonFormat>& json_formats();

// The first member of a document of that name.
Json format_json(const std::string& name);

// A BadField if the document says that it is of another format or of another version of this one.
// Those of before there were versions say nothing.
void require_format(const Json& document, const std::string& name);

#endif
