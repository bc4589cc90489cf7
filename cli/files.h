// SPDX-License-Identifier: MIT
//
// Arrays from and to files: text, csv, raw and npy.
#ifndef LUX_CLI_FILES_H
#define LUX_CLI_FILES_H

#include "catalog/lookup.h"

#include <string>
#include <vector>

enum class Format { text, csv, raw, npy };

struct InputFile {
  std::string path;  // empty or "-": the standard input
  Format format;
  std::vector<std::string> columns;  // numbers from 1 or header names; empty: all of them
};

// The sources of a call, as the bytes of their elements.
struct Input {
  std::string sources[2];
  bool header = false;  // the csv had one
};

struct Output {
  std::string destinations[2];
};

bool is_standard_stream(const std::string& path);

// By the ending of the name; `otherwise` when that says nothing.
Format format_of(const std::string& path, Format otherwise);

// What a function needs from a file; a Failure says what is wrong with it, and where.
Input read_input(const InputFile& file, const Function& function);

std::string read_file(const std::string& path);

// A Failure if that path cannot be written; to be called before long work, not after it.
void require_writable(const std::string& path);

// From now on signals that end the process remove a file under way.
void watch_signals();

// Both complete or not at all: a regular file is written beside its place and renamed into it. The
// standard output when the path is empty or "-".
void write_file(const std::string& path, const std::string& text);
void write_output(const std::string& path, Format format, const Function& function,
                  const Output& output, bool header);

#endif
