#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""usage: cpp_header_test.py COMPILER SOURCE: what the compiler makes of include/luxvm.hpp."""

import re
import subprocess
import sys
import unittest

COMPILER, SOURCE = sys.argv[1:3]
HEADER = f"{SOURCE}/include/luxvm.hpp"


def compiled(text, *options):
    return subprocess.run([COMPILER, "-m32", "-std=c++20", f"-I{SOURCE}/include", "-x", "c++", "-", *options],
                          input=f'#include "luxvm.hpp"\n{text}', capture_output=True, text=True)


class Header(unittest.TestCase):
    def test_stands_alone(self):
        for more in "-std=c++20", "-std=c++23", "-fno-exceptions":
            run = compiled("", "-fsyntax-only", "-Wall", "-Wextra", "-Wconversion", "-pedantic", "-Werror", more)
            self.assertEqual(run.stderr, "", more)

    def test_refusals_name_what_there_is(self):
        cases = [("lux::exp(d, d, lux::a24)", "the grades of double are lux::a50 and lux::a53"),
                 ("lux::sin(cf, cf, lux::a50)", "the grades of float are lux::a11, lux::a21 and lux::a24"),
                 ("lux::floor(d, d, lux::a53)", "this function is exact and has no grades"),
                 ("lux::exp(d, f)", "the arrays of a call have one type of elements"),
                 ("lux::exp(d, constants)", "a destination holds constants"),
                 ("lux::atan2(a3, a3, a4)", "arrays of different sizes"),
                 ("lux::hypot(cf, cf, cf)", "the elements are float, double or"),
                 ("lux::exp(d, d, 3)", "behind the arrays stand a grade, lux::every or both")]
        lines = "".join(f"void f{i}(){{ {call}; }}\n" for i, (call, _) in enumerate(cases))
        errors = compiled("""std::span<double> d; std::span<float> f; std::span<const double> constants;
            std::span<std::complex<float>> cf; float a3[3], a4[4];\n#line 1 "cases"\n""" + lines,
                          "-fsyntax-only").stderr
        told, asker = {}, None
        for line in errors.split("\n"):
            if match := re.match(r"cases:(\d+):.*required from here", line):
                asker = int(match[1])
            elif match := re.search(r"static assertion failed: luxvm: (.*)", line):
                told.setdefault(asker, []).append(match[1])
        self.assertEqual(errors.count(" error: "), len(cases), errors)
        for i, (call, message) in enumerate(cases, 1):
            self.assertEqual([text[:len(message)] for text in told.get(i, [])], [message], call)

    def test_costs_the_call_alone(self):
        """Each pair of functions has the same instructions."""
        pairs = {
            "sizes_in_the_types": (
                "std::span<const float, 64> x, std::span<float, 64> y",
                "return luxsExp_32f_A24(x.data(), y.data(), 64);", "return lux::exp(x, y).status();"),
            "sizes_compared": (
                "std::span<const double> x, std::span<double> y",
                "if (x.size() != y.size()) [[unlikely]] lux::detail::sizes_differ();"
                "return x.size() == 0 ? 0 : luxsLn_64f_A50(x.data(), y.data(), int32_t(x.size()));",
                "return lux::ln(x, y, lux::a50).status();"),
            "complex_scalar": (
                "std::span<const std::complex<float>, 8> x, std::complex<float> c, std::span<std::complex<float>, 8> y",
                "return luxsPowx_32fc_A24(reinterpret_cast<const Lux32fc*>(x.data()),"
                "Lux32fc{c.real(), c.imag()}, reinterpret_cast<Lux32fc*>(y.data()), 8);",
                "return lux::powx(x, c, y).status();"),
            "count_forgotten": (
                "std::span<const float, 64> x, std::span<float, 64> y",
                "luxsRint_32f(x.data(), y.data(), 64); return 0;", "return lux::rint(x, y).status();")}
        text = "".join(f'extern "C" LuxStatus {name}_{way}({parameters}) {{ {body} }}\n'
                       for name, (parameters, *bodies) in pairs.items() for way, body in zip("ch", bodies))
        assembly = compiled(text, "-O2", "-fno-pie", "-S", "-o", "-").stdout

        def instructions(name):
            body = re.search(rf"^{name}:\n(.*?)^\t\.size\t{name},", assembly, re.M | re.S)[1]
            lines = [line for line in body.split("\n") if re.match(r"\t[a-z]", line)]
            labels = {}  # numbered as they come
            return [re.sub(r"\.L\d+", lambda m: labels.setdefault(m[0], f"label {len(labels)}"), line)
                    for line in lines]

        for name in pairs:
            self.assertTrue(any("call" in line or "jmp" in line for line in instructions(f"{name}_c")))
            self.assertEqual(instructions(f"{name}_c"), instructions(f"{name}_h"), name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
