#!/usr/bin/env python3
"""Compiles the C++ blocks of Markdown files: documentation.py FOLDER COMPILER... -- FILE...

A block with a main function is a program; any other is put into a function in which
`recognizer` is there.
"""
import pathlib
import re
import subprocess
import sys

BEFORE = """
#include <iostream>
#include <memory>
#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/HostTaskQueues.h>
#include <lirvox/platform/Platform.h>
#include <lirvox/platform/SampleFeed.h>
struct MyLog : lirvox::platform::Log { void write(std::string_view) override {} };
"""
AROUND = """void block%d([[maybe_unused]] std::shared_ptr<lirvox::Lirvox> recognizer) {
%s}
"""


def sources(path):
    """C++ files that hold all blocks of a file."""
    text, inside = path.read_text(), ""
    for match in re.finditer(r"^```cpp\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        line = text.count("\n", 0, match.start()) + 2
        code = '#line %d "%s"\n%s' % (line, path, match[1])
        if "int main" in code:
            yield code
        else:
            inside += AROUND % (line, code)
    if inside:
        yield BEFORE + inside


def main():
    end = sys.argv.index("--")
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    compiler, failed, count = sys.argv[2:end], False, 0
    for path in map(pathlib.Path, sys.argv[end + 1:]):
        for source in sources(path):
            file = folder / ("%d.cpp" % count)
            file.write_text(source)
            failed = subprocess.run([*compiler, "-fsyntax-only", file]).returncode != 0 or failed
            count += 1
    print("%d files" % count)
    return 1 if failed or count == 0 else 0


sys.exit(main())
