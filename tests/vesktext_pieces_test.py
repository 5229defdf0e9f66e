#!/usr/bin/env python3
# The tool's output for lines cut into pieces of a few bytes, against its
# output for the same lines whole (pieces larger than the input), for every
# command that reads lines, under every code page, over inputs that put
# each boundary condition at a cut. A row is a code page, a command and an
# input; a failing row prints them. usage: vesktext_pieces_test.py TOOL
import concurrent.futures, itertools, os, re, subprocess, sys

TOOL, PIECE = sys.argv[1], 8
HELP = subprocess.run([TOOL, "--help"], capture_output=True, text=True).stdout
PAGES = re.findall(r"^  (\S+)", HELP.split("code pages:\n")[1].split("\n\n")[0], re.M)
COMMANDS = ("form|form --percent-space|form --convert --content-version 5|form --convert "
            "--content-version 6|high|escape|escape --strict|upper128|url|strip|strip "
            "--scheme http:|parse|decode|decode --plus").split("|")
# Characters of every width: each double-byte page's (one with a trail byte
# below 0x40), UTF-8 of 2 to 4 bytes (a lead that takes bytes below 0x40
# too), bytes that are no UTF-8; and what strip, parse and decode read.
SAMPLES = [b"\x82\xa0", b"\x83\\", b"\xd6\xd0", b"\xa4\xa4", b"\xc7\xd1", "é".encode(),
           "あ".encode(), "😀".encode(), b"\xf0!!!", b"\xe9", b"\x80\x80", b"%41", b"%4",
           b"+%2b%", b"-12", b"HTTP://x", b"\r"]
# Each sample straddling a cut at every offset, after fill bytes below 0x40
# and above; empty lines, CRLF, long stretches with no byte below 0x40, and
# a long line of UTF-8 that its last byte makes no UTF-8.
LINES = [fill * pad + sample * 3 + fill for pad in range(2 * PIECE + 1)
         for fill in (b" ", b"x", b"7") for sample in SAMPLES]
LINES += [b"", b"\r", b"a\r", "é".encode() * 5 * PIECE + b"\xff"]
LINES += [sample * 5 * PIECE for sample in SAMPLES[:11] + [b"Az"]]
INPUTS = {"lines": b"\n".join(LINES) + b"\n"}
# A last line at and about multiples of the piece size, with and without
# its '\n'; and a NUL byte at a cut and next to one.
SIZES = [PIECE + d for d in range(-3, 4)] + [2 * PIECE, 3 * PIECE]
for size, end in itertools.product(SIZES, (b"", b"\n")):
    INPUTS[f"last line of {size} bytes + {end!r}"] = b"a\n" + (b"7caf\xc3\xa9 " * 9)[:size] + end
for at in range(PIECE - 2, PIECE + 2):
    INPUTS[f"NUL at {at}"] = b"a" * at + b"\0bc\n"


def run(page, command, data, piece=PIECE):
    return subprocess.run([TOOL, "--codepage", page] + command.split(), input=data,
                          capture_output=True, env=dict(os.environ, VESKTEXT_PIECE_SIZE=str(piece)))


def failure(page, command, name, data):
    whole, cut = run(page, command, data, len(data) + 1), run(page, command, data)
    # A NUL refuses its line: what was written before it stays.
    fits = (lambda a, b: a.startswith(b)) if b"\0" in data else (lambda a, b: a == b)
    if cut.returncode == whole.returncode and fits(cut.stdout, whole.stdout) and fits(
            cut.stderr[::-1], whole.stderr[::-1]):
        return None
    return (f"FAIL: --codepage {page} {command}, input {name}, pieces of {PIECE}: status "
            f"{cut.returncode}, {cut.stdout[:200]!r} {cut.stderr!r}; whole: {whole.returncode}, "
            f"{whole.stdout[:200]!r} {whole.stderr!r}")


# The way back, in pieces too: decoding what an encoder wrote gives each
# byte value but NUL and '\n' again, each on a line of its own and all on one.
BYTES = bytes(range(1, 256)).replace(b"\n", b"")
BYTES = b"\n".join([bytes([b]) for b in BYTES] + [BYTES, b""])
def back_failure(page, encoder, decoder):
    back = run(page, decoder, run(page, encoder, BYTES).stdout).stdout
    return None if back == BYTES else f"FAIL: --codepage {page} {encoder} | {decoder}: {back!r}"


JOBS = [(failure, page, command, *item) for page, command, item in itertools.product(
    PAGES, COMMANDS, INPUTS.items())]
JOBS += [(back_failure, page, *pair.split("|")) for page in PAGES for pair in (
    "form|decode --plus", "form --convert|decode --plus", "url|decode", "escape --strict|decode")]
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    failures = [f for f in pool.map(lambda job: job[0](*job[1:]), JOBS) if f is not None]
print("\n".join(failures + [f"{len(JOBS)} rows, {len(failures)} failed"]))
sys.exit(len(failures) != 0)
