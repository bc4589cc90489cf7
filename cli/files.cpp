// SPDX-License-Identifier: MIT
#include "cli/files.h"
#include "cli/cli.h"
#include "cli/numbers.h"
#include "cli/progress.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>
#include <memory>
#include <utility>

struct Closer {
  void operator()(FILE* file) const {
    if (file != stdin && file != stdout) fclose(file);
  }
};
using Handle = std::unique_ptr<FILE, Closer>;

bool is_standard_stream(const std::string& path) { return path.empty() || path == "-"; }

static bool ends_with(const std::string& text, std::string_view end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

Format format_of(const std::string& path, Format otherwise) {
  if (ends_with(path, ".csv")) return Format::csv;
  if (ends_with(path, ".npy")) return Format::npy;
  if (ends_with(path, ".raw") || ends_with(path, ".bin")) return Format::raw;
  if (ends_with(path, ".txt")) return Format::text;
  return otherwise;
}

// ---- Reading ----------------------------------------------------------------------------------

static std::string shown_name(const std::string& path) {
  return is_standard_stream(path) ? "the standard input" : path;
}

static Failure read_failure(const std::string& path, int error) {
  return Failure(fmt::format("cannot read {}: {}", shown_name(path), strerror(error)));
}

struct Source {
  std::string name;
  Handle file;
  uint64_t size;  // 0: unknown
};

static Source open_source(const std::string& path) {
  Source source{shown_name(path),
                Handle(is_standard_stream(path) ? stdin : fopen(path.c_str(), "rb")), 0};
  struct stat info;
  if (!source.file || fstat(fileno(source.file.get()), &info) != 0) throw read_failure(path, errno);
  if (S_ISDIR(info.st_mode)) throw read_failure(path, EISDIR);
  if (S_ISREG(info.st_mode)) source.size = uint64_t(info.st_size);
  if (source.file.get() == stdin && isatty(STDIN_FILENO))
    say("Reading numbers from the terminal; end with Ctrl-D.\n");
  return source;
}

struct Line {
  std::string_view text;
  uint64_t number = 0;
};

// Lines that hold something: blank ones and those that start with # are passed over.
class Lines {
 public:
  explicit Lines(Source& source) : source(source), progress("reading", source.size) {}
  ~Lines() { free(buffer); }
  Lines(const Lines&) = delete;

  bool next(Line& line) {
    constexpr std::string_view kBlank = " \t\r\n";
    for (;;) {
      errno = 0;
      const ssize_t length = getline(&buffer, &capacity, source.file.get());
      if (length < 0) {
        if (errno == ENOMEM) throw std::bad_alloc();
        if (ferror(source.file.get())) throw read_failure(source.name, errno);
        return false;
      }
      progress.advance(uint64_t(length));
      line.number = ++count;
      line.text = {buffer, size_t(length)};
      constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
      if (count == 1 && line.text.substr(0, 3) == kByteOrderMark) line.text.remove_prefix(3);
      const size_t first = line.text.find_first_not_of(kBlank);
      if (first == std::string_view::npos || line.text[first] == '#') continue;
      line.text = line.text.substr(0, line.text.find_last_not_of(kBlank) + 1);
      return true;
    }
  }

 private:
  Source& source;
  Progress progress;
  char* buffer = nullptr;
  size_t capacity = 0;
  uint64_t count = 0;
};

static void split_text(std::string_view line, std::vector<std::string_view>& fields) {
  constexpr const char* kBlank = " \t";
  fields.clear();
  for (size_t at = line.find_first_not_of(kBlank); at != std::string_view::npos;) {
    const size_t end = std::min(line.find_first_of(kBlank, at), line.size());
    fields.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(kBlank, end);
  }
}

// A quoted field ends at its quote and nothing but blanks follow: otherwise the quote stays, so that
// the field is no number and nothing of the line is passed over in silence.
static void split_csv(std::string_view line, std::vector<std::string_view>& fields) {
  constexpr std::string_view kBlank = " \t";
  fields.clear();
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlank), line.size()));
    const bool quoted = !line.empty() && line[0] == '"';
    const size_t quote = quoted ? line.find('"', 1) : std::string_view::npos;
    const size_t after =
        quote == std::string_view::npos ? quote : line.find_first_not_of(kBlank, quote + 1);
    const bool whole =
        quote != std::string_view::npos && (after == std::string_view::npos || line[after] == ',');
    const size_t end = whole ? after : line.find(',');
    fields.push_back(whole ? line.substr(1, quote - 1) : line.substr(0, end));
    if (end == std::string_view::npos) return;
    line.remove_prefix(end + 1);
  }
}

static void split(Format format, std::string_view line, std::vector<std::string_view>& fields) {
  format == Format::csv ? split_csv(line, fields) : split_text(line, fields);
}

static std::string_view trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

// A number, or what may be a mistyped one: it begins as numbers do, or something is missing.
static bool may_be_number(std::string_view field) {
  field = trimmed(field);
  uint64_t bits;
  std::string why;
  if (field.empty() || parse_real(field, 8, bits, why)) return true;
  if (field[0] == '+' || field[0] == '-') field.remove_prefix(1);
  if (!field.empty() && field[0] == '.') field.remove_prefix(1);
  return !field.empty() && field[0] >= '0' && field[0] <= '9';
}

// A first line names the columns when no field of it can be meant as a number.
static bool is_header(const std::vector<std::string_view>& fields) {
  return std::none_of(fields.begin(), fields.end(), may_be_number);
}

static size_t column_index(const std::string& wanted, std::string_view name, size_t width,
                           const std::vector<std::string>& header) {
  const auto named = std::find(header.begin(), header.end(), wanted);
  if (named != header.end()) return size_t(named - header.begin());
  size_t number = 0;
  const auto [end, error] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), number);
  const bool is_number = error == std::errc() && end == wanted.data() + wanted.size();
  if (is_number && number >= 1 && number <= width) return number - 1;
  if (is_number)
    throw Failure(fmt::format("{} has {} column{}, not a column {}", name, width,
                              width == 1 ? "" : "s", number));
  throw Failure(header.empty()
                    ? fmt::format("{} has no header line, so a column is a number from 1 to {}, "
                                  "not {}",
                                  name, width, in_quotes(wanted))
                    : fmt::format("{} has no column {}; it has {}", name, in_quotes(wanted),
                                  fmt::join(header, ", ")));
}

static std::vector<size_t> choose_columns(const InputFile& file, std::string_view name,
                                          size_t needed, size_t width,
                                          const std::vector<std::string>& header,
                                          const Function& function) {
  std::vector<size_t> chosen;
  if (file.columns.empty() && width == needed) {
    for (size_t i = 0; i < width; ++i) chosen.push_back(i);
    return chosen;
  }
  if (file.columns.size() != needed) {
    const std::string have = header.empty()
                                 ? fmt::format("{}", width)
                                 : fmt::format("{} ({})", width, fmt::join(header, ", "));
    throw Failure(fmt::format("{} needs {} column{} and {} has {}{}", function.name, needed,
                              needed == 1 ? "" : "s", name, have,
                              file.columns.empty()
                                  ? width > needed ? ": choose with --column" : ""
                                  : fmt::format(", but --column names {}", file.columns.size())));
  }
  for (const std::string& wanted : file.columns)
    chosen.push_back(column_index(wanted, name, width, header));
  return chosen;
}

static Input read_table(const InputFile& file, Source& source, const Function& function) {
  const size_t parts = size_t(function.type.parts);
  const size_t needed = size_t(function.shape.sources) * parts;
  Input input;
  Lines lines(source);
  Line line;
  std::vector<std::string_view> fields;
  std::vector<std::string> header;
  std::vector<size_t> chosen;
  size_t width = 0;
  uint64_t first = 0;
  std::string why;
  while (lines.next(line)) {
    split(file.format, line.text, fields);
    if (first == 0) {
      first = line.number;
      width = fields.size();
      input.header = file.format == Format::csv && is_header(fields);
      if (input.header)
        for (std::string_view field : fields) header.emplace_back(trimmed(field));
      chosen = choose_columns(file, source.name, needed, width, header, function);
      if (input.header) continue;
    }
    if (fields.size() != width)
      throw Failure(fmt::format("{}, line {}: {} column{} where line {} has {}", source.name,
                                line.number, fields.size(), fields.size() == 1 ? "" : "s", first,
                                width));
    for (size_t i = 0; i < needed; ++i) {
      uint64_t bits;
      if (!parse_real(fields[chosen[i]], function.type.width, bits, why))
        throw Failure(fmt::format("{}, line {}, column {}: {}", source.name, line.number,
                                  chosen[i] + 1, why));
      append_bits(input.sources[i / parts], bits, function.type.width);
    }
  }
  return input;
}

static std::string read_bytes(Source& source) {
  constexpr size_t kChunk = 1 << 20;
  std::string bytes;
  if (source.size > bytes.max_size()) throw std::bad_alloc();
  bytes.reserve(size_t(source.size));
  Progress progress("reading", source.size);
  const std::unique_ptr<char[]> chunk(new char[kChunk]);
  while (const size_t got = fread(chunk.get(), 1, kChunk, source.file.get())) {
    bytes.append(chunk.get(), got);
    progress.advance(got);
  }
  if (ferror(source.file.get())) throw read_failure(source.name, errno);
  return bytes;
}

std::string read_file(const std::string& path) {
  Source source = open_source(path);
  return read_bytes(source);
}

// `data` holds rows of `width` elements.
static void take_columns(Input& input, std::string& data, size_t at, size_t width, size_t bytes,
                         const std::vector<size_t>& chosen) {
  if (width == 1) {
    data.erase(0, at);
    input.sources[0] = std::move(data);
    return;
  }
  for (size_t i = 0; i < chosen.size(); ++i) {
    input.sources[i].reserve((data.size() - at) / width);
    for (size_t element = at + chosen[i] * bytes; element < data.size(); element += width * bytes)
      input.sources[i].append(data, element, bytes);
  }
}

static Input read_raw(const InputFile& file, Source& source, const Function& function) {
  if (!file.columns.empty()) throw Failure("a raw file has no columns to choose from");
  const size_t bytes = size_t(function.type.bytes()), width = size_t(function.shape.sources);
  std::string data = read_bytes(source);
  if (data.size() % (bytes * width) != 0)
    throw Failure(fmt::format("{} ends within {}: it has {} bytes, and {} reads {} at a time",
                              source.name, width == 1 ? "an element" : "a pair", data.size(),
                              function.name, bytes * width));
  Input input;
  take_columns(input, data, 0, width, bytes, {0, 1});
  return input;
}

static std::string npy_type(const ElementType& type) {
  return fmt::format("<{}{}", type.parts == 2 ? 'c' : 'f', type.bytes());
}

// The text after 'key': in the dictionary of an npy header.
static std::string_view npy_value(std::string_view header, const std::string& key) {
  const size_t at = header.find("'" + key + "':");
  if (at == std::string_view::npos) return {};
  return trimmed(header.substr(at + key.size() + 3));
}

struct NpyHeader {
  size_t data;  // where it starts
  std::string type;
  bool fortran;
  std::vector<uint64_t> shape;
};

static bool parse_npy_header(const std::string& bytes, NpyHeader& header) {
  const auto byte = [&](size_t i) { return size_t(static_cast<unsigned char>(bytes[i])); };
  if (bytes.size() < 12 || bytes.compare(0, 6, "\x93NUMPY") != 0) return false;
  const bool is_short = bytes[6] == 1;
  const size_t start = is_short ? 10 : 12;
  const size_t length = byte(8) | byte(9) << 8 | (is_short ? 0 : byte(10) << 16 | byte(11) << 24);
  if (bytes[6] < 1 || bytes[6] > 3 || length > bytes.size() - start) return false;
  const std::string_view text(bytes.data() + start, length);
  const std::string_view type = npy_value(text, "descr"), order = npy_value(text, "fortran_order");
  std::string_view shape = npy_value(text, "shape");
  const size_t close = shape.find(')');
  if (type.empty() || type[0] != '\'' || order.empty() || shape.empty() || shape[0] != '(' ||
      close == std::string_view::npos)
    return false;
  header.data = start + length;
  header.type = type.substr(1, type.find('\'', 1) - 1);
  header.fortran = order.substr(0, 4) == "True";
  if (!header.fortran && order.substr(0, 5) != "False") return false;
  const char* at = shape.data() + 1;
  const char* end = shape.data() + close;
  while (at < end) {
    uint64_t extent;
    const auto [stop, error] = std::from_chars(at, end, extent);
    if (error != std::errc()) return false;
    header.shape.push_back(extent);
    for (at = stop; at < end && *at == ' ';) ++at;
    if (at < end && *at++ != ',') return false;
    while (at < end && *at == ' ') ++at;
  }
  return true;
}

static void check_npy(const NpyHeader& header, std::string_view name, size_t size,
                      const Function& function) {
  const std::string wanted = npy_type(function.type);
  if (header.type != wanted)
    throw Failure(fmt::format("{} holds elements of type {}, and {} takes {}", name,
                              in_quotes(header.type), function.name, wanted));
  if (header.shape.empty() || header.shape.size() > 2)
    throw Failure(fmt::format("{} has {} dimensions; one, or rows and columns, can be read", name,
                              header.shape.size()));
  const bool flat = header.shape.size() == 1 || header.shape[1] == 1;
  if (header.fortran && !flat)
    throw Failure(fmt::format("{} is stored column by column; store it in C order", name));
  // In floating point, because a false header may claim more than 64 bits can count.
  double claimed = function.type.bytes();
  for (uint64_t extent : header.shape) claimed *= double(extent);
  if (claimed != double(size - header.data))
    throw Failure(fmt::format("{} is {}: its header promises {:.0f} bytes of data and {} follow",
                              name, claimed > double(size - header.data) ? "short" : "too long",
                              claimed, size - header.data));
}

static Input read_npy(const InputFile& file, Source& source, const Function& function) {
  std::string bytes = read_bytes(source);
  if (bytes.empty()) return {};
  NpyHeader header;
  if (!parse_npy_header(bytes, header))
    throw Failure(fmt::format("{} is not an npy file, or its header is damaged", source.name));
  check_npy(header, source.name, bytes.size(), function);
  const size_t width = header.shape.size() == 2 ? size_t(header.shape[1]) : 1;
  if (bytes.size() == header.data) return {};
  const auto chosen =
      choose_columns(file, source.name, size_t(function.shape.sources), width, {}, function);
  Input input;
  take_columns(input, bytes, header.data, width, size_t(function.type.bytes()), chosen);
  return input;
}

Input read_input(const InputFile& file, const Function& function) {
  Source source = open_source(file.path);
  Input input = file.format == Format::raw   ? read_raw(file, source, function)
                : file.format == Format::npy ? read_npy(file, source, function)
                                             : read_table(file, source, function);
  if (input.sources[0].empty()) throw Failure(fmt::format("{} holds no numbers", source.name));
  if (input.sources[0].size() / size_t(function.type.bytes()) > size_t(INT32_MAX))
    throw Failure(fmt::format("{} holds more elements than a call can take", source.name));
  return input;
}

// ---- Writing ----------------------------------------------------------------------------------

// The file under way, for the signal handler: an interrupted run leaves nothing behind.
static char unfinished[PATH_MAX];

// Held while the name above and the file change together, and from a signal on for good: who would
// change them then waits for the end of the process.
static std::atomic_flag naming;

// The thread that makes the file has its signals blocked, but any other may be the one to get them.
class Naming {
 public:
  Naming() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &signals_);
    while (naming.test_and_set()) sched_yield();
  }
  ~Naming() {
    naming.clear();
    sigprocmask(SIG_SETMASK, &signals_, nullptr);
  }
  Naming(const Naming&) = delete;

 private:
  sigset_t signals_;
};

static void remove_unfinished(int signal) {
  while (naming.test_and_set()) sched_yield();
  if (unfinished[0]) unlink(unfinished);
  raise(signal);  // with the default action, which SA_RESETHAND has put back
}

void watch_signals() {
  static bool watched;
  if (std::exchange(watched, true)) return;
  struct sigaction action {};
  action.sa_handler = remove_unfinished;
  action.sa_flags = int(SA_RESETHAND);
  for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    struct sigaction current;
    if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_DFL)
      sigaction(signal, &action, nullptr);
  }
}

class Target {
 public:
  explicit Target(const std::string& path) {
    name = is_standard_stream(path) ? "the standard output" : path;
    if (is_standard_stream(path)) {
      file.reset(stdout);
      return;
    }
    struct stat info;
    const bool exists = stat(path.c_str(), &info) == 0;
    if (exists && !S_ISREG(info.st_mode)) {  // a device or a pipe cannot be renamed into place
      file.reset(fopen(path.c_str(), "wb"));
      if (!file) fail(errno);
      return;
    }
    if (exists && access(path.c_str(), W_OK) != 0) fail(errno);
    open_beside(real_path(path), exists ? info.st_mode & 07777 : 0666 & ~mask());
  }

  ~Target() {
    if (unfinished[0]) unlink(unfinished);
    unfinished[0] = 0;
  }
  Target(const Target&) = delete;

  void write(const char* bytes, size_t size) {
    if (fwrite(bytes, 1, size, file.get()) != size) fail(errno);
  }

  void finish() {
    if (fflush(file.get()) != 0) fail(errno);
    if (file.get() == stdout) return;
    if (fclose(file.release()) != 0) fail(errno);
    if (!unfinished[0]) return;
    const Naming held;
    if (rename(unfinished, place.c_str()) != 0) fail(errno);
    unfinished[0] = 0;
  }

 private:
  [[noreturn]] void fail(int error) const {
    // The message tells it all; a second one about unwritten bytes would not help.
    if (file.get() == stdout) fclose(stdout);
    throw Failure(fmt::format("cannot write to {}: {}", name, strerror(error)));
  }

  static mode_t mask() {
    const mode_t current = umask(0);
    umask(current);
    return current;
  }

  // A link stays a link: what it points to is replaced.
  static std::string real_path(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), free);
    return resolved ? resolved.get() : path;
  }

  void open_beside(const std::string& path, mode_t mode) {
    place = path;
    const std::string temporary = path + ".XXXXXX";
    if (temporary.size() >= sizeof unfinished) fail(ENAMETOOLONG);
    char pattern[sizeof unfinished];
    strcpy(pattern, temporary.c_str());
    watch_signals();
    int descriptor;
    {
      const Naming held;
      descriptor = mkstemp(pattern);
      if (descriptor < 0) fail(errno);
      strcpy(unfinished, pattern);
    }
    file.reset(fdopen(descriptor, "wb"));
    if (!file || fchmod(descriptor, mode) != 0) fail(errno);
  }

  std::string name, place;
  Handle file;
};

void require_writable(const std::string& path) {
  const auto fail = [&](int error) {
    const char* const name = is_standard_stream(path) ? "the standard output" : path.c_str();
    throw Failure(fmt::format("cannot write to {}: {}", name, strerror(error)));
  };
  if (is_standard_stream(path)) {
    if ((fcntl(STDOUT_FILENO, F_GETFL) & O_ACCMODE) == O_RDONLY) fail(EBADF);
    return;
  }
  struct stat info;
  const bool exists = stat(path.c_str(), &info) == 0;
  if (exists && S_ISDIR(info.st_mode)) fail(EISDIR);
  if (!exists || S_ISREG(info.st_mode)) {
    const Target attempt(path);  // goes away unfinished
    return;
  }
  if (access(path.c_str(), W_OK) != 0) fail(errno);  // a pipe's reader must not see it come and go
}

static void write_table(Target& target, Format format, const Function& function,
                        const Output& output, bool header) {
  constexpr size_t kFlushAt = 1 << 16;
  const int width = function.type.width;
  const char separator = format == Format::csv ? ',' : ' ';
  const size_t bytes = size_t(function.type.bytes());
  const size_t count = output.destinations[0].size() / bytes;
  const int columns = function.shape.destinations * function.type.parts;
  fmt::memory_buffer buffer;
  if (header) {
    for (int i = 0; i < columns; ++i)
      fmt::format_to(std::back_inserter(buffer), "{}{}{}{}", i ? "," : "", function.name,
                     columns == 1 ? "" : "_", columns == 1 ? "" : std::to_string(i + 1));
    buffer.push_back('\n');
  }
  Progress progress("writing", count * bytes);
  for (size_t k = 0; k < count; ++k) {
    for (int i = 0; i < columns; ++i) {
      const std::string& from = output.destinations[i / function.type.parts];
      const size_t at = k * bytes + size_t(i % function.type.parts * width);
      if (i) buffer.push_back(separator);
      buffer.append(decimal(load_bits(&from[at], width), width));
    }
    buffer.push_back('\n');
    if (buffer.size() < kFlushAt) continue;
    target.write(buffer.data(), buffer.size());
    buffer.clear();
    progress.advance(kFlushAt / 20 * bytes);
  }
  target.write(buffer.data(), buffer.size());
}

static std::string npy_header(const Function& function, size_t count) {
  const std::string shape = function.shape.destinations == 1
                                ? fmt::format("({},)", count)
                                : fmt::format("({}, {})", count, function.shape.destinations);
  std::string header = fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': {}, }}",
                                   npy_type(function.type), shape);
  constexpr size_t kBefore = 10, kMultiple = 64;
  while ((kBefore + header.size() + 1) % kMultiple != 0) header += ' ';
  header += '\n';
  const std::string start("\x93NUMPY\x01\x00", 8);
  return start + char(header.size() & 255) + char(header.size() >> 8) + header;
}

static void write_elements(Target& target, const Function& function, const Output& output) {
  const size_t bytes = size_t(function.type.bytes());
  const std::string& first = output.destinations[0];
  if (function.shape.destinations == 1) return target.write(first.data(), first.size());
  for (size_t at = 0; at < first.size(); at += bytes)
    for (const std::string& destination : output.destinations)
      target.write(&destination[at], bytes);
}

void write_file(const std::string& path, const std::string& text) {
  Target target(path);
  target.write(text.data(), text.size());
  target.finish();
}

void write_output(const std::string& path, Format format, const Function& function,
                  const Output& output, bool header) {
  Target target(path);
  if (format == Format::npy) {
    const std::string start =
        npy_header(function, output.destinations[0].size() / size_t(function.type.bytes()));
    target.write(start.data(), start.size());
  }
  if (format == Format::text || format == Format::csv)
    write_table(target, format, function, output, header && format == Format::csv);
  else
    write_elements(target, function, output);
  target.finish();
}
