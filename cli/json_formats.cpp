// SPDX-License-Identifier: MIT
//
// luxvm formats: the fields of what the command writes as JSON.
#include "cli/json_formats.h"
#include "cli/command_line.h"
#include "cli/json_file.h"

#include <fmt/format.h>

#include <algorithm>

const std::vector<JsonFormat>& json_formats() {
  static const std::vector<JsonFormat> all{
      {"luxvm-list",
       1,
       "`luxvm list --json`",
       {
           {"functions[].name", "the export"},
           {"functions[].family", "Exp, Sqrt, ..."},
           {"functions[].type", "32f, 64f, 32fc or 64fc"},
           {"functions[].grade", "A11, A21, A24, A50 or A53; null for the rounding functions"},
           {"functions[].shape", "sources_destinations; 2_1_1 is source, scalar, destination"},
           {"functions[].row", "place in the type's cost table; null without a grade"},
           {"functions[].variant",
            "0 for the best grade, 1 for the next, 2 for A11; null without a grade"},
       }},
      {"luxvm-eval",
       1,
       "`luxvm eval --json`",
       {
           {"function", "the export"},
           {"status", "what it returned"},
           {"meaning", "that in words"},
           {"elements[].sources[].decimal",
            "a source: the shortest decimal that reads back as the same number"},
           {"elements[].sources[].hex", "the same as a hex float"},
           {"elements[].sources[].bits", "the same as a bit pattern"},
           {"elements[].sources[].re.decimal",
            "a source, real part, when complex: the shortest decimal that reads back as the same "
            "number"},
           {"elements[].sources[].re.hex", "the same as a hex float"},
           {"elements[].sources[].re.bits", "the same as a bit pattern"},
           {"elements[].sources[].im.decimal",
            "a source, imaginary part, when complex: the shortest decimal that reads back as the "
            "same number"},
           {"elements[].sources[].im.hex", "the same as a hex float"},
           {"elements[].sources[].im.bits", "the same as a bit pattern"},
           {"elements[].results[].decimal",
            "a result: the shortest decimal that reads back as the same number"},
           {"elements[].results[].hex", "the same as a hex float"},
           {"elements[].results[].bits", "the same as a bit pattern"},
           {"elements[].results[].re.decimal",
            "a result, real part, when complex: the shortest decimal that reads back as the same "
            "number"},
           {"elements[].results[].re.hex", "the same as a hex float"},
           {"elements[].results[].re.bits", "the same as a bit pattern"},
           {"elements[].results[].im.decimal",
            "a result, imaginary part, when complex: the shortest decimal that reads back as the "
            "same number"},
           {"elements[].results[].im.hex", "the same as a hex float"},
           {"elements[].results[].im.bits", "the same as a bit pattern"},
           {"scalar.decimal",
            "the scalar of a 2_1_1 function: the shortest decimal that reads back as the same "
            "number"},
           {"scalar.hex", "the same as a hex float"},
           {"scalar.bits", "the same as a bit pattern"},
           {"scalar.re.decimal",
            "the scalar of a 2_1_1 function, real part, when complex: the shortest decimal that "
            "reads back as the same number"},
           {"scalar.re.hex", "the same as a hex float"},
           {"scalar.re.bits", "the same as a bit pattern"},
           {"scalar.im.decimal",
            "the scalar of a 2_1_1 function, imaginary part, when complex: the shortest decimal "
            "that reads back as the same number"},
           {"scalar.im.hex", "the same as a hex float"},
           {"scalar.im.bits", "the same as a bit pattern"},
           {"reports[].code", "of a special element that was reported"},
           {"reports[].meaning", "that in words"},
           {"reports[].index", "of the element"},
           {"reports[].name", "what the reporting function was called with; may be empty"},
       }},
      {"luxvm-apply",
       1,
       "`luxvm apply --json`, to the standard error",
       {
           {"function", "the export"},
           {"elements", "how many"},
           {"status", "what the call returned"},
           {"meaning", "that in words"},
           {"reports[].code", "of special elements that were reported"},
           {"reports[].meaning", "that in words"},
           {"reports[].count", "how many of them"},
           {"seconds", "of a second, equal call"},
           {"cycles_per_element", "of that call, time-stamp cycles"},
           {"threads", "slices of the call"},
       }},
      {"luxvm-env",
       1,
       "`luxvm env --json`",
       {
           {"library.name", "file name of the library"},
           {"library.version", "as text"},
           {"library.major", "first number of the version"},
           {"library.minor", "second number"},
           {"library.major_build", "third number of the build"},
           {"library.build", "last number of the build"},
           {"library.target_code", "two letters for the processor class"},
           {"library.build_date", "when it was built"},
           {"processor.vendor", "CPUID's twelve letters"},
           {"processor.brand", "CPUID's text, may be empty"},
           {"processor.tuned_vendors[]", "vendors that threading is tuned for"},
           {"processor.cpuid.0.eax", "CPUID leaf 0"},
           {"processor.cpuid.0.ebx", "CPUID leaf 0"},
           {"processor.cpuid.0.ecx", "CPUID leaf 0"},
           {"processor.cpuid.0.edx", "CPUID leaf 0"},
           {"processor.cpuid.1.eax", "CPUID leaf 1"},
           {"processor.cpuid.1.ebx", "CPUID leaf 1"},
           {"processor.cpuid.1.ecx", "CPUID leaf 1"},
           {"processor.cpuid.1.edx", "CPUID leaf 1"},
           {"processor.cpuid.4.eax", "CPUID leaf 4, all 0 where there is none"},
           {"processor.cpuid.4.ebx", "CPUID leaf 4, all 0 where there is none"},
           {"processor.cpuid.4.ecx", "CPUID leaf 4, all 0 where there is none"},
           {"processor.cpuid.4.edx", "CPUID leaf 4, all 0 where there is none"},
           {"processor.hyperthreading", "whether logical processors of a package may share a core"},
           {"processor.logical_per_package", "CPUID leaf 1"},
           {"processor.cores_per_package", "CPUID leaf 4"},
           {"processor.available", "processors of the affinity mask"},
           {"processor.cores", "as the library takes them"},
           {"processor.packages", "as the library takes them"},
           {"threads", "thread count in force"},
           {"threads_source", "where it comes from; null where the core library does not tell"},
           {"controls.x87.word", "control word of the x87 unit"},
           {"controls.x87.precision", "24, 53 or 64 bits"},
           {"controls.x87.rounding", "to nearest, down, up or toward zero"},
           {"controls.x87.masked[]", "exceptions that do not trap"},
           {"controls.mxcsr.word", "of the SSE unit"},
           {"controls.mxcsr.rounding", "as above"},
           {"controls.mxcsr.flush_to_zero", "whether subnormal results become 0"},
           {"controls.mxcsr.denormals_are_zero", "whether subnormal operands count as 0"},
           {"controls.mxcsr.masked[]", "exceptions that do not trap"},
           {"controls.mxcsr.raised[]", "flags that are set"},
       }},
      {"luxvm-explain",
       1,
       "`luxvm explain --json`",
       {
           {"function", "the export"},
           {"n", "elements of the call"},
           {"threads", "threads that it may use"},
           {"threshold", "elements beyond which it is split; null for never"},
           {"never_because", "why, when the threshold is null"},
           {"above_threshold", "n > threshold"},
           {"above_100_per_thread", "n > 100 threads"},
           {"split", "whether the call is split"},
           {"slices.count", "slices"},
           {"slices.length", "elements of all but the last"},
           {"slices.last_length", "elements of the last"},
           {"slices.team", "threads that run them"},
           {"topology.L", "logical processors a package"},
           {"topology.K", "cores a package"},
           {"topology.n", "processors of the affinity mask"},
           {"topology.t", "logical processors a core"},
           {"topology.Q", "cores"},
           {"topology.P", "packages"},
           {"topology.hyperthreading", "whether logical processors may share a core"},
           {"topology.clamped", "whether t, Q or P was raised to 1"},
           {"start_cost", "cycles to add a thread; -1 for never"},
       }},
      {"luxvm-check",
       1,
       "`luxvm check --json`",
       {
           {"passed", "whether everything did"},
           {"library.path", "file that is loaded"},
           {"library.version", "as text"},
           {"library.build", "four numbers"},
           {"library.build_date", "when it was built"},
           {"core.path", "file of the core library"},
           {"core.threads", "thread count in force"},
           {"missing[]", "exports that are no vector functions and not there"},
           {"functions[].name", "the export"},
           {"functions[].passed", "whether it did"},
           {"functions[].present", "whether it is there"},
           {"functions[].path", "file that it comes from"},
           {"functions[].special_rows", "rows of special values"},
           {"functions[].special_calls", "calls they were tried in"},
           {"functions[].special_failures[]", "rows that failed, in words"},
           {"functions[].elements", "results behind the hash"},
           {"functions[].hash", "of the results; null when it is missing"},
           {"functions[].published", "hash that it should have; null when there is none"},
           {"functions[].processor_dependent", "whether another processor may give another hash"},
           {"functions[].results", "how the hashes compare, in words"},
           {"functions[].depends_on[]", "what the results must not depend on, and do"},
       }},
      {"luxvm-bench",
       1,
       "`luxvm bench --json`",
       {
           {"date", "of the run"},
           {"processor", "brand"},
           {"compiler", "that built the command"},
           {"libm", "C library compared with"},
           {"library", "hash of the library's file"},
           {"ticks_per_cycle", "of the time-stamp counter in a core cycle"},
           {"settings.patterns[]", "which functions; none for all"},
           {"settings.n[]", "--n"},
           {"settings.threads[]", "--threads"},
           {"settings.offset[]", "--offset"},
           {"settings.special", "--special, may be empty"},
           {"settings.large", "--large"},
           {"settings.compare", "--compare"},
           {"settings.milliseconds", "--milliseconds"},
           {"settings.passes", "--passes"},
           {"complete", "false while a --resume run goes on"},
           {"rows[].name", "the export"},
           {"rows[].family", "its family"},
           {"rows[].type", "its type"},
           {"rows[].grade", "null for the rounding functions"},
           {"rows[].n", "elements of each array"},
           {"rows[].threads", "threads that the call may use"},
           {"rows[].split", "whether it is split"},
           {"rows[].offset", "bytes beyond a cache line's start"},
           {"rows[].large", "arguments beyond the fast reduction"},
           {"rows[].special_elements", "how many of n"},
           {"rows[].passes", "that the figures are the best of"},
           {"rows[].reports.*", "by code: reports of one call"},
           {"rows[].cycles.minimum",
            "core cycles per element; null when the clock never held still"},
           {"rows[].cycles.median", "of the samples"},
           {"rows[].cycles.kept", "rounds that count"},
           {"rows[].cycles.dropped", "rounds dropped because the clock moved"},
           {"rows[].plain.minimum",
            "the same without the special elements, if there are any; null when the clock never "
            "held still"},
           {"rows[].plain.median", "of the samples"},
           {"rows[].plain.kept", "rounds that count"},
           {"rows[].plain.dropped", "rounds dropped because the clock moved"},
           {"rows[].one_call.minimum",
            "cycles of a call with one element, where there is a goal; null when the clock never "
            "held still"},
           {"rows[].one_call.median", "of the samples"},
           {"rows[].one_call.kept", "rounds that count"},
           {"rows[].one_call.dropped", "rounds dropped because the clock moved"},
           {"rows[].libm.minimum",
            "cycles per element of the C library's function, with --compare; null when the clock "
            "never held still"},
           {"rows[].libm.median", "of the samples"},
           {"rows[].libm.kept", "rounds that count"},
           {"rows[].libm.dropped", "rounds dropped because the clock moved"},
           {"rows[].sleef.minimum",
            "cycles per element of SLEEF's, with --compare; null when the clock never held still"},
           {"rows[].sleef.median", "of the samples"},
           {"rows[].sleef.kept", "rounds that count"},
           {"rows[].sleef.dropped", "rounds dropped because the clock moved"},
           {"rows[].sleef_function", "which function that is"},
           {"rows[].cycles_of_a_special_element", "that each of them adds"},
           {"rows[].call_beyond_element", "one_call less one element"},
           {"rows[].goal", "cycles per element to reach, where it holds"},
           {"rows[].met", "whether it is, by two decimals"},
           {"rows[].libm_ratio", "how many times as long libm takes"},
           {"rows[].sleef_ratio", "how many times as long SLEEF takes"},
           {"summary.goals", "rows beside a goal"},
           {"summary.met", "of them"},
           {"summary.mean_libm_ratio",
            "geometric mean over the real functions' best grades; null when there is none"},
           {"summary.mean_of", "how many"},
           {"summary.slower_than_libm[]", "exports"},
           {"summary.lower_grade_slower[][]", "pairs of exports: lower grade, higher grade"},
           {"summary.calls_above_goal[]", "exports whose call costs more than its goal"},
       }},
      {"luxvm-accuracy",
       1,
       "`luxvm accuracy --json`",
       {
           {"kind", "errors"},
           {"library.version", "of the library"},
           {"library.digest", "hash of its file"},
           {"date", "of the run"},
           {"samples", "--samples"},
           {"seed", "--seed"},
           {"range", "--range, if given"},
           {"functions[].name", "the export"},
           {"functions[].family", "its family"},
           {"functions[].type", "its type"},
           {"functions[].grade", "may be empty"},
           {"functions[].method", "sampled, exhaustive or named"},
           {"functions[].count", "real numbers compared"},
           {"functions[].max_ulp", "largest error in units of the last place"},
           {"functions[].max_relative", "largest relative error"},
           {"functions[].mean_ulp", "mean error"},
           {"functions[].max_ulp_subnormal_results", "largest error among subnormal results"},
           {"functions[].max_normwise", "largest distance in the plane by magnitude, when complex"},
           {"functions[].mismatches", "results of a wrong class: NaN, infinity, sign of zero"},
           {"functions[].guarantee.bound", "what is promised"},
           {"functions[].guarantee.met", "whether it is kept"},
           {"functions[].goal.bound", "what is to be reached, where there is a goal"},
           {"functions[].goal.met", "whether it is"},
           {"functions[].largest[].kind", "ulp, relative or normwise"},
           {"functions[].largest[].part", "of results that have two"},
           {"functions[].largest[].error", "largest of that kind"},
           {"functions[].largest[].arguments[]", "where, as patterns"},
           {"functions[].exceptions.count", "results that the promise leaves out"},
           {"functions[].exceptions.max_ulp", "largest error among them"},
           {"functions[].worst[].arguments[]", "of the ten largest errors"},
           {"functions[].worst[].result", "what came out"},
           {"functions[].worst[].nearest", "number nearest to the exact value"},
           {"functions[].worst[].ulp", "error"},
           {"functions[].worst[].part", "0 or 1, of results that have two"},
           {"functions[].mismatched[].arguments[]", "of the first ten mismatches"},
           {"functions[].mismatched[].result", "what came out"},
           {"functions[].mismatched[].nearest", "number nearest to the exact value"},
           {"functions[].mismatched[].ulp", "0"},
           {"functions[].mismatched[].part", "0 or 1, of results that have two"},
           {"functions[].histogram[].up_to",
            "upper end of the class in ulp; null for what is beyond"},
           {"functions[].histogram[].count", "results in it"},
           {"functions[].ranges[].range", "of the first argument"},
           {"functions[].ranges[].count", "results in it"},
           {"functions[].ranges[].max_ulp", "largest error in it"},
           {"functions[].ranges[].mean_ulp", "mean error in it"},
           {"functions[].ranges[].arguments[]", "of the largest error in it"},
           {"functions[].envelope[]",
            "largest error in 512 equal parts of the line of all numbers; null where nothing was "
            "measured"},
           {"functions[].special_values.rows", "rows of special values"},
           {"functions[].special_values.cases", "calls they were tried in"},
           {"functions[].special_values.failures[]", "rows that failed, in words"},
       }},
      {"luxvm-figures",
       1,
       "`luxvm accuracy --record`",
       {
           {"computations[].family", "of grades whose results are the same"},
           {"computations[].type", "of them"},
           {"computations[].grades[]", "the best first"},
           {"computations[].promises[]", "in the same order"},
           {"computations[].hash", "of the published results that these errors belong to"},
           {"computations[].survey.method", "sampled or exhaustive"},
           {"computations[].survey.date", "of the last run over the whole line"},
           {"computations[].survey.results", "real numbers compared in it"},
           {"computations[].survey.mean_ulp", "mean error in it"},
           {"computations[].largest[].kind", "ulp, relative or normwise"},
           {"computations[].largest[].part", "of results that have two"},
           {"computations[].largest[].error", "largest ever found"},
           {"computations[].largest[].arguments[]", "where, as patterns"},
           {"computations[].largest[].found", "sampled, exhaustive or named"},
           {"computations[].largest[].date", "when"},
           {"computations[].largest[].processor", "on what"},
       }},
  };
  return all;
}

static const JsonFormat& find_format(const std::string& name) {
  return *std::find_if(json_formats().begin(), json_formats().end(),
                       [&](const JsonFormat& format) { return format.name == name; });
}

Json format_json(const std::string& name) {
  const JsonFormat& format = find_format(name);
  return {{"name", format.name}, {"version", format.version}};
}

void require_format(const Json& document, const std::string& name) {
  if (!document.is_object() || !document.contains("format")) return;
  const Json& format = object_in(document, "format");
  if (text_in(format, "name") != name) throw BadField(fmt::format("'format' is not {}", name));
  whole_in(format, "version", 1, find_format(name).version);
}

// As Markdown: docs/json.md is this text.
static std::string description() {
  std::string text =
      "<!-- SPDX-License-Identifier: MIT -->\n"
      "<!-- Made by `luxvm formats`. -->\n"
      "# JSON\n\n"
      "Every JSON document that the command writes is an object that begins with `format`: its\n"
      "`name` and its `version`. The version changes when a field goes or comes to mean something\n"
      "else. Fields may be added at any time. In the paths below, `[]` stands for each element of\n"
      "a list and `*` for every member. Numbers that JSON does not have (infinity, NaN) are null.\n"
      "Bit patterns are text: 0x and 8 hex digits for a single, 16 for a double.\n";
  for (const JsonFormat& format : json_formats()) {
    text += fmt::format("\n## {} {}\n\nWritten by {}.\n\n| Field | Meaning |\n|---|---|\n",
                        format.name, format.version, format.written_by);
    for (const auto& [path, meaning] : format.fields)
      text += fmt::format("| `{}` | {} |\n", path, meaning);
  }
  return text;
}

void add_formats(Program& program) {
  Command* command =
      program.add_subcommand("formats", "Describe the JSON documents that the command writes");
  command->footer(
      "Each begins with its format's name and version. The description is Markdown.\n"
      "Examples:\n"
      "  luxvm formats\n"
      "  luxvm formats | grep summary");
  command->callback([] { fmt::print("{}", description()); });
}
