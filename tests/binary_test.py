#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The shared libraries as binaries: names, needed libraries, sections, instruction set; where they
are looked for, in the build tree and installed.

binary_test.py <source dir> <libluxvmk3> <libluxcore> <build dir> <cmake> <libluxvmk3-wide>
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

if len(sys.argv) < 7:
    sys.exit(__doc__)
SOURCE, VMATH, CORE, BUILD, CMAKE, WIDE = (sys.argv.pop(1) for _ in range(6))
sys.path.append(f"{SOURCE}/abi")
import abilist

RELEASE = ".".join(re.search(r"project\(luxvm VERSION (\d+)\.(\d+)",
                             Path(SOURCE, "CMakeLists.txt").read_text()).groups())
LIBC = {"memcmp", "memcpy", "memset", "sched_getaffinity", "sysconf", "__errno_location",
        "__sched_cpucount", "__sched_cpualloc", "__sched_cpufree", "malloc", "free",
        "__stack_chk_fail", "clock_gettime", "dladdr", "dlclose", "dlerror", "dlopen", "dlsym", "getauxval",
        "secure_getenv", "strcmp", "strrchr", "getenv", "strtol", "strtoul",
        "sigfillset", "__register_atfork", "pthread_create", "pthread_join", "pthread_sigmask",
        "pthread_setcancelstate",
        "pthread_mutex_lock", "pthread_mutex_unlock", "pthread_attr_init", "pthread_attr_destroy",
        "pthread_attr_setstacksize", "pthread_attr_setaffinity_np"}
RUNTIME = r"GOMP_\w+|omp_(get|in)_\w+"
# What the start-up code of every shared object refers to, weakly.
START_UP = {"__cxa_finalize", "__gmon_start__", "_ITM_deregisterTMCloneTable",
            "_ITM_registerTMCloneTable"}


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


def preprocessed(program):
    return subprocess.run(["gcc", "-E", "-P", "-xc++", f"-I{SOURCE}", "-"], input=program,
                          check=True, capture_output=True, text=True).stdout


def listed(*macros, file):
    """The names that the preprocessor makes of a list; each macro as it is defined for it."""
    lines = [f"#define {macro}" for macro in macros] + [f'#include "core/{file}"']
    return re.findall(r"\S+", preprocessed("\n".join(lines) + "\n"))


FUNCTIONS = listed("LUX_GRADED(f, t, g, ...) luxs##f##_##t##_##g",
                   "LUX_EXACT(f, t, ...) luxs##f##_##t", file="functions.def")
GRADED = listed("LUX_GRADED(f, t, g, ...) luxs##f##_##t##_##g", file="functions.def")
SCALAR_ROUTINES = listed("LUX_SCALAR_ROUTINE(name) name", file="exports.def")
OTHERS = listed("LUX_EXPORT(name) name", "LUX_SCALAR_ROUTINE(name)", file="exports.def")


def dynamic_names(library, defined):
    lines = run("nm", "-D", "--defined-only" if defined else "--undefined-only", library).split("\n")
    return {line.split()[-1].split("@")[0] for line in lines if line}


# Integer instructions up to the i686 and its conditional moves.
INTEGER = """aaa adc add and bound bsf bsr bswap bt btc btr bts call cdq cbw cwde cwd cwtl cltd cld clc
cmp cmpxchg cmpxchg8b cpuid dec div enter hlt idiv imul inc int int3 jmp lea leave lods lock loop mov
movs movsb movsw movsl movsx movzx mul neg nop not or out pop popf push pushf rcl rcr rdtsc rep repz
repnz ret rol ror sahf lahf sar sbb scas shl shld shr shrd stc std stos sub test ud2 xadd xchg xor
notrack data16 cs ds es fs gs ss endbr32""".split()  # endbr32: a no-operation of the i686
CONDITIONS = "o no b c nae ae nb nc e z ne nz be na a nbe s ns p pe np po l nge ge nl le ng g nle"
CONDITIONAL = [p + c for p in ("j", "set", "cmov") for c in CONDITIONS.split()] + ["jecxz", "jcxz"]
# Everything of the x87 unit begins with f; of these, what came later:
X87_LATE = {"fisttp", "fxsave64", "fxrstor64"}
MMX = """emms movd movq packssdw packsswb packuswb paddb paddw paddd paddsb paddsw paddusb paddusw
pand pandn pcmpeqb pcmpeqw pcmpeqd pcmpgtb pcmpgtw pcmpgtd pmaddwd pmulhw pmullw por psllw pslld
psllq psraw psrad psrlw psrld psrlq psubb psubw psubd psubsb psubsw psubusb psubusw punpckhbw
punpckhwd punpckhdq punpcklbw punpcklwd punpckldq pxor
maskmovq movntq pavgb pavgw pextrw pinsrw pmaxsw pmaxub pminsw pminub pmovmskb pmulhuw psadbw
pshufw""".split()
SSE = """addps addss andnps andps cmpps cmpss comiss cvtpi2ps cvtps2pi cvtsi2ss cvtss2si cvttps2pi
cvttss2si divps divss ldmxcsr maxps maxss minps minss movaps movhlps movhps movlhps movlps movmskps
movntps movss movups mulps mulss orps prefetchnta prefetcht0 prefetcht1 prefetcht2 rcpps rcpss
rsqrtps rsqrtss sfence shufps sqrtps sqrtss stmxcsr subps subss ucomiss unpckhps unpcklps
xorps""".split()
SSE += [f"cmp{c}{s}" for c in "eq lt le unord neq nlt nle ord".split() for s in ("ps", "ss")]
PLAIN, MMX, SSE = set(INTEGER + CONDITIONAL), set(MMX), set(SSE)


def is_allowed(mnemonic, operands):
    if "ymm" in operands or "zmm" in operands:
        return False
    if mnemonic in SSE:
        return True
    if mnemonic in MMX:  # SSE2 gave the same names to the long registers
        return "xmm" not in operands
    if "xmm" in operands:
        return False
    return mnemonic in PLAIN or (mnemonic.startswith("f") and mnemonic not in X87_LATE)


def instructions(library):
    for line in run("objdump", "-d", "-M", "intel", "--no-show-raw-insn", library).split("\n"):
        match = re.match(r"\s*[0-9a-f]+:\s+(.*)", line)
        if not match or match[1].startswith("(bad)"):
            if match:
                yield "(bad)", line
            continue
        words = match[1].split()
        while len(words) > 1 and words[0] in ("rep", "repz", "repnz", "lock", "notrack", "data16",
                                              "cs", "ds", "es", "fs", "gs", "ss", "bnd"):
            words.pop(0)
        yield words[0], " ".join(words[1:])


class Names(unittest.TestCase):
    def test_exports_are_the_lists(self):
        names = FUNCTIONS + SCALAR_ROUTINES + OTHERS
        self.assertEqual(len(names), len(set(names)))
        self.assertEqual(dynamic_names(VMATH, True), set(names))

    def test_no_export_is_lost(self):
        for library in VMATH, CORE:
            path = Path(SOURCE, "abi", Path(library).name.split(".")[0].removeprefix("lib") + ".abilist")
            lost, new = abilist.differences(library, path)
            self.assertEqual(lost + new, [], "\n" + "\n".join(lost + new))
        with tempfile.TemporaryDirectory() as directory:
            path = Path(directory, "list")
            path.write_text("threads_omp_of_n_lux variable 8\nluxcoreGone function\n")
            lost, new = abilist.differences(CORE, path)
            self.assertEqual([line.split()[0] for line in lost],
                             ["luxcoreGone:", "threads_omp_of_n_lux"])
            self.assertEqual(len(new), len(dynamic_names(CORE, True)) - 1)
            renewed = subprocess.run([f"{SOURCE}/abi/abilist.py", CORE, path, "--renew"],
                                     capture_output=True, text=True)
            self.assertEqual(renewed.returncode, 1)
            self.assertIn("the ABI would break", renewed.stderr)
            self.assertIn("luxcoreGone", path.read_text())

    def test_headers_declare_the_exports(self):
        for header, skipped, names in (
                ("luxvmk3.h", "NOTHING", FUNCTIONS + OTHERS),
                ("luxvmk3_scalar.h", "LUXVMK3_H", SCALAR_ROUTINES),
                ("luxcore.h", "NOTHING", dynamic_names(CORE, True))):
            # A header that is skipped does not define the mark either.
            text = run("gcc", "-E", "-P", f"-D{skipped}",
                       "-DLUX_API=__attribute__((visibility(\"default\")))",
                       f"{SOURCE}/include/{header}")
            declared = re.findall(r"visibility\(\"default\"\)\)\)[^;(]*?\b(\w+)\s*[;(]", text)
            self.assertEqual(sorted(declared), sorted(names))

    def test_documents_count_right(self):
        """Wherever a document tells how many functions there are."""
        told = 0
        for path in [*Path(SOURCE).glob("*.md"), *Path(SOURCE, "docs").glob("*.md")]:
            for number, kind in re.findall(r"(?<!-)\b(\d{3})\s+(element-wise|graded|vector|math)?\s*functions\b",
                                           path.read_text()):
                told += 1
                wanted = len(GRADED if kind == "graded" else FUNCTIONS)
                self.assertEqual(int(number), wanted, f"{path}: there are {wanted} {kind} functions")
        self.assertGreater(told, 0)

    def test_every_function_has_its_entry(self):
        """In docs/functions a text, in the README a row of the table that names its types."""
        texts = {tuple(path.stem.split("_")): path for path in Path(SOURCE, "docs/functions").glob("*.md")}
        rows = [[cell.strip() for cell in line.strip("|").split("|")]
                for line in Path(SOURCE, "README.md").read_text().split("\n") if line.startswith("| ")]
        for family, type_ in {tuple(name[4:].split("_")[:2]) for name in FUNCTIONS}:
            own = [names for names in texts if family in names and ("complex" in names) == type_.endswith("c")]
            self.assertEqual(len(own), 1, f"{family} {type_} has no text in docs/functions")
            cells = [row for row in rows if family in row[0].split(", ")]
            column = ["32f", "64f", "32fc", "64fc"].index(type_) + 1
            self.assertTrue(cells and cells[0][column] != "-",
                            f"{family} {type_} is missing in the README's table of functions")

    def test_every_table_has_its_generator(self):
        tables = list(Path(SOURCE).glob("*/generated/*.h")) + list(Path(SOURCE).glob("*/*/generated/*.h"))
        self.assertGreater(len(tables), 0)
        for table in tables:
            generator = re.search(r"Generated by (tables/\w+\.py)", table.read_text())
            self.assertTrue(generator and Path(SOURCE, generator[1]).exists(),
                            f"{table} has no generator in tables/")

    def test_imports(self):
        for name in sorted(dynamic_names(VMATH, False) - LIBC - START_UP):
            self.assertRegex(name, f"^({RUNTIME}|threads_omp_of_n_lux)$")
        self.assertEqual(dynamic_names(CORE, False) - LIBC - START_UP, set())
        self.assertTrue({"omp_get_num_procs", "threads_omp_of_n_lux"} <= dynamic_names(VMATH, False))

    def test_reports_can_be_interposed(self):
        jumps = run("readelf", "-rW", VMATH)
        self.assertRegex(jumps, r"R_386_(JUMP_SLOT|GLOB_DAT)\s.*\bnoxsError\b")
        self.assertRegex(jumps, r"R_386_(JUMP_SLOT|GLOB_DAT)\s.*\bnoxdError\b")
        self.assertNotIn("(SYMBOLIC)", run("readelf", "-dW", VMATH))


class Sections(unittest.TestCase):
    def test_needed_libraries_and_soname(self):
        for library, soname, needed in (
                (VMATH, f"libluxvmk3.so.{RELEASE}",
                 {f"libluxcore.so.{RELEASE}", "libgomp.so.1", "libc.so.6"}),
                (CORE, f"libluxcore.so.{RELEASE}", {"libc.so.6"}),
                (WIDE, f"libluxvmk3-wide.so.{RELEASE}", set())):
            text = run("readelf", "-dW", library)
            self.assertEqual(set(re.findall(r"\(NEEDED\).*\[(.*)\]", text)), needed)
            self.assertEqual(re.findall(r"\(SONAME\).*\[(.*)\]", text), [soname])
            self.assertNotIn("TEXTREL", text)
            # What constructors fill in is missing in calls before them: there is none but the
            # compiler's, that for forks and that for the wide library, or that for the thread count.
            sizes = re.findall(r"\(INIT_ARRAYSZ\) +(\d+) \(bytes\)", text)
            self.assertEqual(sizes, {VMATH: ["12"], CORE: ["8"], WIDE: []}[library])

    def test_nothing_is_both_written_and_run(self):
        for library in VMATH, CORE, WIDE:
            segments = re.findall(r"^ +LOAD .* ([R ][W ][E ]) ", run("readelf", "-lW", library), re.M)
            self.assertGreater(len(segments), 2)
            self.assertNotIn("RWE", segments)
            self.assertIn("GNU_RELRO", run("readelf", "-lW", library))

    def test_stack_is_not_executable(self):
        for library in VMATH, CORE, WIDE:
            stack = [l for l in run("readelf", "-lW", library).split("\n") if "GNU_STACK" in l]
            self.assertEqual(len(stack), 1)
            self.assertEqual(stack[0].split()[-2], "RW")

    def test_kernels_keep_no_state(self):
        """What can be written is thresholds, the topology and the team's: calls may interrupt calls."""
        found = set(re.findall(r" [bBdD] (?!_ZZ\w+E16_nox_min_threads)(?:_ZL\d+)?(\w+)(?:\.\d+)?$", run("nm", VMATH), re.M))
        self.assertIn("logic_A_const", found)
        self.assertEqual({name for name in found if not name.startswith("_")} -
                         {"Core_count", "HHTs_count", "Proc_count", "logic_A_const", "logic_MaxThreads",
                          "in_forked_child", "credit", "refused", "pause_end", "pool_size", "version",
                          "nox_clock", "nox_cpuid", "completed", "taken_in"}, set())
        self.assertFalse([name for name in found if name.startswith("_Z")])

    def test_build_date_can_be_set(self):
        with tempfile.TemporaryDirectory() as directory:
            subprocess.run(["gcc", "-c", "-m32", f"-I{SOURCE}/include", "-DLUX_VERSION_NUMBERS=1,2,3,4",
                            '-DLUX_RELEASE="1.2"', f"{SOURCE}/core/version.cpp", "-o", f"{directory}/o"],
                           check=True, env={**os.environ, "SOURCE_DATE_EPOCH": "1793923200"})
            self.assertIn(b"\0Nov  6 2026\0", Path(directory, "o").read_bytes())


class SearchPaths(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.dir = Path(directory.name)

    def installed(self):
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", self.dir / "prefix"], check=True,
                       stdout=subprocess.DEVNULL, umask=0o022)
        return self.dir / "prefix"

    def test_installed_files(self):
        """Those that were built, for everyone to read and for nobody else to change."""
        prefix = self.installed()
        self.assertLessEqual({p.name for p in Path(SOURCE, "include").iterdir()},
                             {p.name for p in (prefix / "include").iterdir()})
        for library in VMATH, CORE:
            self.assertEqual((prefix / "lib" / Path(library).name).read_bytes(), Path(library).read_bytes())
        for path in prefix.rglob("*"):
            runs = path.is_dir() or path.parent.name == "bin"
            if path.is_symlink():
                self.assertEqual(path.resolve().parent, path.parent)
            else:
                self.assertEqual(path.stat().st_mode & 0o7777, 0o755 if runs else 0o644, path)
            if path.is_file() and path.read_bytes()[:4] == b"\x7fELF":
                self.assertNotIn("TEXTREL", run("readelf", "-dW", path))
                self.assertRegex(run("readelf", "-lW", path), r"GNU_STACK .* RW +0x")

    def test_no_element_means_the_current_directory(self):
        for root in Path(BUILD, "bin"), Path(VMATH).parent, self.installed():
            files = [p for p in root.rglob("*") if p.is_file() and p.read_bytes()[:4] == b"\x7fELF"]
            self.assertGreaterEqual(len(files), 2, root)
            for path in files:
                for value in re.findall(r"\(R(?:UN)?PATH\).*\[(.*)\]", run("readelf", "-dW", path)):
                    for element in value.split(":"):
                        self.assertRegex(element, r"^(\$ORIGIN|/)", path)

    def test_library_directory_of_another_name(self):
        run(CMAKE, "-S", SOURCE, "-B", self.dir, f"-DCMAKE_TOOLCHAIN_FILE={SOURCE}/cmake/i386.cmake",
            "-DCMAKE_INSTALL_LIBDIR=lib/i386-linux-gnu", "-DLUXVM_TESTS=OFF", "-G", "Unix Makefiles")
        for target, wanted in [("cli/CMakeFiles/luxvm", ["$ORIGIN/../lib/i386-linux-gnu"]),
                               ("core/CMakeFiles/luxvmk3", ["$ORIGIN"]),
                               ("luxcore/CMakeFiles/luxcore", [])]:
            line = (self.dir / f"{target}.dir/link.txt").read_text().replace("\\", "")
            self.assertEqual(re.findall(r'-rpath,"?([^"\s]*)', line), wanted)
        # Nothing is changed at installation.
        for script in self.dir.rglob("cmake_install.cmake"):
            self.assertNotIn("RPATH_CHANGE", script.read_text())

    def test_readme_in_a_hostile_folder(self):
        """Its program, and every block of commands in order, but those of make, which need a network, of
        pkg-config, which must be told the place, and of Fortran, whose program is no file. The files that lie about mean nothing, but where a
        command looks for libraries in its folder."""
        readme = Path(SOURCE, "README.md").read_text()
        self.assertIn(Path(SOURCE, "examples/first.c").read_text(), re.findall(r"```c\n(.*?)```", readme, re.S))
        blocks = [block for block in re.findall(r"```sh\n(.*?)```", readme, re.S)
                  if not re.search(r"^make |^gfortran |\bpkg-config\b", block, re.M)]
        self.assertEqual(len(blocks), 3)
        prefix, folder = self.installed(), self.dir / "a folder – ∂ü"
        (folder / "build").mkdir(parents=True)
        (folder / "build/release").symlink_to(BUILD)
        for name in "examples", "include":
            (folder / name).symlink_to(Path(SOURCE, name))
        hostile = [folder / name for name in ("libgomp.so.1", "libluxvmk3.so", "libluxcore.so", "luxvm",
                                              Path(VMATH).name, Path(CORE).name, "luxvmk3.h", "stdio.h")]
        for path in hostile:
            path.write_text("#error of another\n")
            path.chmod(0o755)
        environment = {"PATH": f"{prefix}/bin:{os.environ['PATH']}", "LC_ALL": "de_DE.UTF-8",
                       "TMPDIR": "/proc/none"}
        shown = []
        for block in blocks:
            if "LD_LIBRARY_PATH=." in block:
                for path in hostile:
                    path.unlink()
            for command in re.findall(r"(?:.*\\\n)*.+\n", block):
                command = command.replace("/opt/luxvm", str(prefix))
                command = command.replace("check  ", "check Inv")  # all of them have a test of their own
                shown.append(run("sh", "-ec", command, cwd=folder, env=environment, umask=0o022))
                if " -o first " in command and not re.search("-shared", command):
                    shown.append(run("./first", cwd=folder, env=environment))
        wanted = "exp(1) = 2.718281828459045"
        self.assertEqual([wanted in text for text in shown].count(True), 3)
        self.assertEqual([text.endswith("\npassed\n") for text in shown].count(True), 2)
        # The commands of the text, as anybody in a folder that cannot be read.
        commands = re.findall(r"`(luxvm (?:check|env|explain|list|help|--version)\b[^`]*)`", readme)
        self.assertGreaterEqual(len(commands), 2)
        for path in self.dir, folder:
            path.chmod(0o711)
        anybody = {"user": 65534, "group": 65534, "extra_groups": []} if os.getuid() == 0 else {}
        for command in commands:
            run("sh", "-ec", command, cwd=folder, env=environment, **anybody)
            run(folder / "first", cwd="/", env={}, **anybody)


class Instructions(unittest.TestCase):
    def test_wide_steps_stand_alone(self):
        """They need nobody, no register of 512 bits, and clear the upper halves before they return."""
        self.assertEqual(dynamic_names(WIDE, False), set())
        self.assertEqual(dynamic_names(WIDE, True), {"luxvmk3_wide"})
        bodies = re.split(r"\n[0-9a-f]+ <(\w+)>:\n", run("objdump", "-d", "-M", "intel", "--no-show-raw-insn", WIDE))
        functions = dict(zip(bodies[1::2], bodies[2::2]))
        steps = [name for name in functions if re.match(r"_Z\d+wide_", name)]
        self.assertGreater(len(steps), 50)
        for name in steps:
            body = functions[name]
            elsewhere = None if re.search("[xy]mm", body) else re.search(r"jmp +\w+ <(\w+)>", body)
            self.assertIn("vzeroupper", functions[elsewhere[1]] if elsewhere else body, name)
        for name, body in functions.items():
            self.assertNotRegex(body, r"zmm|%?k[1-7]\b|\bmm[0-7]\b|\bst\(", name)

    def test_nothing_later_than_the_first_sse(self):
        for library in VMATH, CORE:
            found = list(instructions(library))
            self.assertGreater(len(found), 50)
            late = {f"{m} {o}" for m, o in found if not is_allowed(m, o)}
            self.assertEqual(late, set(), f"in {library}")

    def test_would_be_noticed(self):
        for mnemonic, operands in (("addpd", "xmm0,xmm1"), ("movq", "xmm0,QWORD PTR [eax]"),
                                   ("paddd", "xmm0,xmm1"), ("cvttsd2si", "eax,xmm0"),
                                   ("fisttp", "DWORD PTR [eax]"), ("pause", ""), ("mfence", ""),
                                   ("vaddps", "xmm0,xmm1,xmm2"), ("movdqa", "xmm0,xmm1")):
            self.assertFalse(is_allowed(mnemonic, operands), mnemonic)


if __name__ == "__main__":
    unittest.main()
