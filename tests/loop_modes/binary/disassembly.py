"""disassembly.py LIBRARY: reads the code of every render function and holds its calls to the contract.

A render function calls its maker, host operations, resample_process and the listed cold helpers; a pointer (the gain
curve) only where the mode has an envelope of a stored shape. What an odd code shares with the even one is a jump.
"""

import collections
import re
import subprocess
import sys

library = sys.argv[1]
problems = []

function_head = re.compile(r"[0-9a-f]+ <(.*)>:$")
render_function = re.compile(
    r"_ZN3Aud6Render17LoopModesDespatch12TypedFunctor\w+8Int2TypeILi(\d+)E\w+14ProcessSamples\w+?(\.cold)?$")
refill = re.compile(r"_ZN3Aud6Render20FilteringSRCIteratorI(\w+)E18refillSourceBufferEv(\.cold)?$")
target = re.compile(r"\s(call|jmp)\s+(\*?)(.*?)(?:\s+# [0-9a-f]+)?(?:\s+<([^>+]*)(\+0x[0-9a-f]+)?>)?$")

iterator = {0: "ReverseIterator", 1: "ForwardIterator"}
everywhere = [
    r"_ZNK3Aud18SampleCacheSegment(6status|8pSamples)Ev@.*",
    r"_ZN3Aud6Render12SampleReader14waitForRequest\w+",
    r"_Unwind_Resume@.*",
]


def allowed_calls(code):
    """What the render function of a code may call, by the digits of the code."""
    source = iterator[code >> 10]
    calls = everywhere + [
        rf"_ZN3Aud6Render19SourceIteratorMakerILi{code}EE12makeIteratorE\w+",
        rf"_ZN3Aud11SampleCache15{source}D1Ev@.*",
        rf"_ZN3Aud6Render12SampleReader13missingSampleINS_11SampleCache15{source}\w+",
        rf"_ZN3Aud6Render12SampleReader12stepAtBorderERNS_11SampleCache15{source}\w+",
    ]
    if code >> 10 == 1:
        calls += [r"_ZNK3Aud18SampleCacheSegment6lengthEv@.*",
                  r"_ZN3Aud11SampleCache15ForwardIterator30internal_inc_moveToNextSegmentEv@.*"]
    else:
        calls.append(r"_ZN3Aud6Render12SampleReader16stepAtSegmentEndERNS_11SampleCache15ReverseIteratorE")
    if code >> 7 & 1:
        calls.append(r"_ZN3Aud6Filter6Biquad(13processSampleEf|26getLastProcessSampleResultEv)@.*")
    if code >> 8 & 3 == 1:
        node = "22moveToNextNodeForwardsEv" if code & 1 else "21moveToNextNodeReverseEv"
        calls.append(rf"_ZN3Aud19DynamicLevelControl32DynamicLevelApplyingIteratorBase{node}@.*")
    if code >> 5 & 3 == 2:
        calls += [r"resample_process@.*", r"_ZN3Aud6Render20FilteringSRCIterator\w+18refillSourceBufferEv"]
    return calls


def has_stored_shape(code):
    return code >> 1 & 15 >= 6


def check_calls(name, instructions, calls, pointer_allowed):
    allowed = re.compile("|".join(calls))
    for text in instructions:
        match = target.search(text)
        if match is None:
            continue
        kind, indirect, _, symbol, offset = match.groups()
        if kind == "jmp" and symbol is not None and symbol.split(".cold")[0] == name.split(".cold")[0]:
            continue
        if symbol is None and indirect and kind == "call" and pointer_allowed:
            continue
        if symbol is None or offset or kind == "jmp" or not allowed.fullmatch(symbol):
            problems.append(f"{name}: {text.strip()}")


def check_function(name, instructions, counts):
    if match := render_function.match(name):
        code = int(match[1])
        is_cold = match[2] is not None
        counts["render functions"] += not is_cold
        if code & 1 and code >> 8 & 3 != 1:
            counts["jumps"] += 1
            even = name.replace(f"Int2TypeILi{code}E", f"Int2TypeILi{code - 1}E")
            real = [text for text in instructions if not re.search(r"\t(?:\w+ )*(nop\w?|xchg +%ax,%ax)\b", text)]
            jump = target.search(real[0])
            if len(real) != 1 or jump is None or jump[1] != "jmp" or jump[4] != even or jump[5]:
                problems.append(f"{name} is more than a jump to {even}")
        else:
            check_calls(name, instructions, allowed_calls(code), has_stored_shape(code))
    elif match := refill.match(name):
        counts["refills"] += match[2] is None
        level = "INS_19DynamicLevelControl" in name
        forward = "ForwardIterator" in name
        code = forward << 10 | level << 8 | ("MultiBand" in name) << 7 | ("ForwardsDynamic" in name)
        check_calls(name, instructions, allowed_calls(code), re.search("RampHold|HoldRamp", name))


disassembler = subprocess.Popen(["objdump", "-dw", "--no-show-raw-insn", library], stdout=subprocess.PIPE, text=True)
counts = collections.Counter()
name, instructions = "", []
for line in disassembler.stdout:
    if line.startswith(" "):
        instructions.append(line.rstrip())
    elif head := function_head.match(line):
        check_function(name, instructions, counts)
        name, instructions = head[1], []
check_function(name, instructions, counts)
if disassembler.wait() != 0:
    problems.append("objdump failed")

expected = {"render functions": 12096, "jumps": 4032, "refills": 192}
if counts != expected:
    problems.append(f"found {dict(counts)}, not {expected}")
for problem in problems[:20]:
    print(problem)
print(f"{dict(counts)}, {len(problems)} problems")
sys.exit(bool(problems))
