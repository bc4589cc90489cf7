#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""An installation as a stranger meets it: installed in components, moved, found by CMake, pkg-config
and Meson, completed by shells, removed.

install_test.py <source dir> <build dir> <cmake> [--as-part]
--as-part builds the libraries as a part of another project instead, which takes minutes.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

if len(sys.argv) < 4:
    sys.exit(__doc__)
SOURCE, BUILD, CMAKE = (Path(sys.argv.pop(1)) for _ in range(3))
AS_PART = "--as-part" in sys.argv and (sys.argv.remove("--as-part") or True)
NUMBERS = re.search(r"project\(luxvm VERSION ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text())[1].split(".")
RELEASE = ".".join(NUMBERS[:2])

PROGRAM = """#include <luxcore.h>
#include <luxvmk3.h>
#include <stdio.h>
int main(void) {
  const double x = 1;
  double y = 0;
  if (luxsExp_64f_A53(&x, &y, 1) != LUX_OK || luxcoreGetNumThreads() < 1) return 1;
  printf("%.15g\\n", y);
  return 0;
}
"""
USES = """add_executable(in_c program.c)
add_executable(in_c++ program.cpp)
foreach(program in_c in_c++)
  target_link_libraries(${program} PRIVATE luxvm::luxvm luxvm::core)
endforeach()
"""
MESON = """project('stranger', 'c', 'cpp')
libraries = [dependency('luxvm', version: '>=@', method: 'pkg-config'), dependency('luxcore')]
executable('in_c', 'program.c', dependencies: libraries)
executable('in_c++', 'program.cpp', dependencies: libraries)
""".replace("@", RELEASE)


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    if result.returncode:
        raise AssertionError(f"{command}\n{result.stdout}\n{result.stderr}")
    return result.stdout


class Stranger(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.dir = Path(directory.name)
        cls.flags = {**os.environ, "CFLAGS": "-m32", "CXXFLAGS": "-m32", "LDFLAGS": "-m32"}
        cls.install()

    @classmethod
    def install(cls):
        pass

    def project(self, name, **files):
        folder = self.dir / name
        folder.mkdir()
        for program in "program.c", "program.cpp":
            (folder / program).write_text(PROGRAM)
        for file, text in files.items():
            (folder / (file.replace("_", ".") if file != "CMakeLists" else "CMakeLists.txt")).write_text(text)
        return folder

    def runs(self, folder, **environment):
        for program in "in_c", "in_c++":
            self.assertEqual(run(folder / program, env={**os.environ, **environment}), "2.71828182845905\n")


@unittest.skipIf(AS_PART, "only as a part of another project")
class Installed(Stranger):
    @classmethod
    def install(cls):
        """One component after the other, and to another place than where it is used."""
        cls.files, seen = {}, set()
        for component in "Runtime", "Wide", "Development", "Tools":
            run(CMAKE, "--install", BUILD, "--prefix", cls.dir / "first", "--component", component)
            files = {str(path.relative_to(cls.dir / "first")) for path in (cls.dir / "first").rglob("*")
                     if not path.is_dir()}
            cls.files[component], seen = files - seen, files
        cls.prefix = cls.dir / "moved"
        (cls.dir / "first").rename(cls.prefix)

    def test_components(self):
        self.assertEqual(sorted(self.files["Runtime"]),
                         [f"lib/lib{name}.so.{RELEASE}" for name in ("luxcore", "luxvmk3")])
        self.assertEqual(self.files["Wide"], {f"lib/libluxvmk3-wide.so.{RELEASE}"})
        headers = {f"include/{path.name}" for path in (SOURCE / "include").iterdir()}
        self.assertLessEqual(headers | {"lib/libluxvmk3.so", "lib/libluxcore.so", "lib/pkgconfig/luxvm.pc"},
                             self.files["Development"])
        self.assertIn("bin/luxvm", self.files["Tools"])
        run(self.prefix / "bin/luxvm", "check", "Floor")

    def test_cmake(self):
        folder = self.project("cmake", CMakeLists=f"""cmake_minimum_required(VERSION 3.16)
project(stranger C CXX)
find_package(luxvm {RELEASE} REQUIRED)
{USES}""")
        run(CMAKE, "-S", folder, "-B", folder, f"-DCMAKE_PREFIX_PATH={self.prefix}", env=self.flags)
        run(CMAKE, "--build", folder)
        self.runs(folder)

    def test_cmake_refuses_what_cannot_work(self):
        for version, width, words in ((RELEASE, 8, "32-bit x86"), (int(NUMBERS[0]) + 1, 4, "5.2.0"),
                                      (f"{RELEASE}.999", 4, "5.2.0")):
            folder = self.project(f"refused{version}{width}", CMakeLists=f"""cmake_minimum_required(VERSION 3.16)
project(stranger NONE)
set(CMAKE_SIZEOF_VOID_P {width})
find_package(luxvm {version} REQUIRED)
""")
            result = subprocess.run([CMAKE, "-S", folder, "-B", folder, f"-DCMAKE_PREFIX_PATH={self.prefix}"],
                                    capture_output=True, text=True)
            self.assertNotEqual(result.returncode, 0)
            self.assertIn(words, " ".join(result.stderr.split()))

    def test_pkg_config(self):
        folder = self.project("pkg_config")
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "luxvm", "luxcore", env=environment).split()
        for compiler, program, made in ("gcc", "program.c", "in_c"), ("g++", "program.cpp", "in_c++"):
            run(compiler, "-m32", folder / program, *flags, "-o", folder / made)
        self.runs(folder, LD_LIBRARY_PATH=str(self.prefix / "lib"))

    @unittest.skipUnless(shutil.which("meson"), "Meson is not installed")
    def test_meson(self):
        folder = self.project("meson", meson_build=MESON)
        run("meson", "setup", folder / "build", folder,
            env={**self.flags, "PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")})
        run("meson", "compile", "-C", folder / "build")
        self.runs(folder / "build")

    def test_removed(self):
        """Below DESTDIR; what others had put there stays."""
        below = {**os.environ, "DESTDIR": str(self.dir / "dest")}
        run(CMAKE, "--install", BUILD, "--prefix", "/opt/luxvm", env=below)
        manifest = self.dir / "manifest.txt"
        shutil.copy(BUILD / "install_manifest.txt", manifest)
        other = self.dir / "dest/opt/luxvm/lib/other.so"
        other.write_text("not ours")
        run(CMAKE, "-D", f"MANIFEST={manifest}", "-P", SOURCE / "cmake/uninstall.cmake", env=below)
        self.assertEqual([path for path in (self.dir / "dest").rglob("*") if not path.is_dir()], [other])
        self.assertFalse(other.parent.joinpath("cmake/luxvm").exists())

    def completed(self, *words):
        script = 'compopt() { :; }; source "$0"; COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _luxvm; ' \
                 'printf "%s\\n" "${COMPREPLY[@]}"'
        return run("bash", "-c", script, self.prefix / "share/bash-completion/completions/luxvm", "luxvm",
                   *words).split()

    def test_completion(self):
        commands = set(self.completed("")) - {"--help", "--version"}
        shown = run(self.prefix / "bin/luxvm", "--help").split("Subcommands:")[1]
        self.assertEqual(commands, set(re.findall(r"^  (\w+)  ", shown, re.M)))
        self.assertEqual(set(self.completed("help", "")), commands)
        for command in commands:
            usage = run(self.prefix / "bin/luxvm", command, "--help")
            self.assertEqual(set(self.completed(command, "--")),
                             set(re.findall(r"^  (?:-h,)?(--[\w-]+)", usage, re.M)), command)
        for words, wanted in (
                (["eval", "luxsErfc_64f"], ["luxsErfc_64f_A50", "luxsErfc_64f_A53"]),
                (["apply", "--quiet", "luxsModf_6"], ["luxsModf_64f"]),
                (["apply", "--format", "c"], ["csv"]), (["apply", "--format", "=", "n"], ["npy"]),
                (["apply", "--in", f"{self.prefix}/li"], [f"{self.prefix}/lib"]),
                (["explain", "--n", ""], []), (["env", ""], [])):
            self.assertEqual(self.completed(*words), wanted)
        if shutil.which("zsh"):
            run("zsh", "-n", self.prefix / "share/zsh/site-functions/_luxvm")

    def test_version_is_the_same_everywhere(self):
        header = (SOURCE / "include/luxvmk3.h").read_text()
        patch = re.search(r"#define LUXVM_VERSION_PATCH (\d+)", header)[1]
        version = f"{RELEASE}.{patch}"
        self.assertRegex((SOURCE / "CHANGELOG.md").read_text(), rf"(?m)^## {re.escape(version)} \(\d{{4}}-\d\d-\d\d\)$")
        self.assertRegex((SOURCE / "debian/changelog").read_text(), rf"^luxvm \({re.escape(version)}-\w+\) ")
        self.assertIn(f"Version: {version}\n", (self.prefix / "lib/pkgconfig/luxvm.pc").read_text())


class Part(Stranger):
    """With add_subdirectory and FetchContent, which differ in how they name the folder."""
    WAYS = {"add_subdirectory": f"add_subdirectory({SOURCE} luxvm)",
            "FetchContent": f"include(FetchContent)\nFetchContent_Declare(luxvm SOURCE_DIR {SOURCE})\n"
                            "FetchContent_MakeAvailable(luxvm)"}

    def configured(self, way):
        folder = self.project(way, CMakeLists=f"""cmake_minimum_required(VERSION 3.25)
project(stranger C CXX)
{self.WAYS[way]}
{USES}install(TARGETS in_c)
""")
        run(CMAKE, "-S", folder, "-B", folder, env=self.flags)
        return folder

    @unittest.skipIf(AS_PART, "in the quick tests")
    def test_brings_libraries_alone(self):
        folder = self.configured("FetchContent")
        targets = run(CMAKE, "--build", folder, "--target", "help")
        for target in "luxvmk3", "luxcore", "in_c++":
            self.assertIn(f"... {target}\n", targets)
        for target in "lux_catalog", "luxvm", "frame_test", "installed", "test":
            self.assertNotIn(f"... {target}\n", targets)
        run(CMAKE, "--install", folder / "_deps/luxvm-build", "--prefix", folder / "nothing")
        self.assertFalse((folder / "nothing").exists())

    @unittest.skipUnless(AS_PART, "takes minutes")
    def test_builds(self):
        folder = self.configured("add_subdirectory")
        run(CMAKE, "--build", folder, "--parallel", str(os.cpu_count()))
        self.runs(folder)


if __name__ == "__main__":
    unittest.main()
