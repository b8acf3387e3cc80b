"""symbols.py LIBRARY [ships]: holds the dynamic symbol table to the contract; with "ships", which is the optimised build
of g++, also the relocations and the initialisers.

Hosts find functions by their mangled names, so both compilers must export the same names, letter for letter.
"""

import collections
import hashlib
import re
import subprocess
import sys

library = sys.argv[1]
ships = sys.argv[2:] == ["ships"]
problems = []


def check(condition, problem):
    if not condition:
        problems.append(problem)


def lines_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()


def symbols(*options):
    """(mangled, demangled) of each dynamic symbol, without the version behind the @."""
    mangled = [line.split()[-1] for line in lines_of("nm", "-D", *options, library)]
    plain = "\n".join(name.split("@")[0] for name in mangled)
    filtered = subprocess.run(["c++filt"], input=plain, capture_output=True, text=True, check=True).stdout
    return list(zip(mangled, filtered.splitlines()))


# Exports by their demangled names. A constructor has two symbols, for a complete and for a base object.
render = "Aud::Render::"
exports = {
    render + r"LoopModesDespatch::TypedFunctor<.*>::Functor<Loki::Int2Type<\d+> ?>::ProcessSamples\(.*": 12096,
    render + r"SourceIteratorMaker<\d+>::makeIterator\(Aud::Render::IteratorCreationParams&\)": 864,
    render + r"LinearSRCIterator<.*>::LinearSRCIterator\(.* const&, Aud::SubSamplePos, Aud::SubSamplePos\)": 2 * 192,
    render + r"FilteringSRCIterator<.*>::refillSourceBuffer\(\)": 192,
    render + r"EnvelopeApplyingIteratorMaker<.*>::make\(.* const&, Aud::Render::EnvelopeParameters const&\)": 12,
    r"Aud::GainCurve::Curve<\(Aud::GainCurve::eCurveType\)[123]>::mapUValueToMagnitude\(float\)": 3,
    r"Orv::ModeMetaHelpers2::Despatcher<.*>::registerFunction\(unsigned long, .*\)": 14,
    r"Aud::SampleCache::(\w+)Iterator::\1Iterator\(Aud::SampleCache::\1Iterator const&\)": 2 * 2,
    r"Aud::SampleCache::(Forward|Reverse)Iterator::operator\*\(\) const": 2,
    r"Aud::SubSamplePos::SubSamplePos\(long, int\)": 2,
    r"Aud::Filter::MultiBandBiquad<5u>::processSample\(float\)": 1,
    r"audLMDDllVersionStr\(\)": 1,
    r"cfgAudioPlaybackSpeedLimit": 1,
}
defined = symbols("--defined-only")
counts = collections.Counter()
for _, name in defined:
    matching = [pattern for pattern in exports if re.fullmatch(pattern, name)]
    check(len(matching) == 1, f"exports {name}")
    counts.update(matching)
for pattern, count in exports.items():
    check(counts[pattern] == count, f"exports {counts[pattern]}, not {count}, of {pattern}")
names = "\n".join(sorted(mangled.split("@")[0] for mangled, _ in defined))
digest = hashlib.sha256(names.encode()).hexdigest()
check(digest == "4098a43fe30c0a6cdd92901f9f3e557a878bb63702781e9bf543534021def68b", f"exports other mangled names than hosts know (nm -D --defined-only): {digest}")

# What it leaves to the host and to libresample, and nothing else but the C and C++ runtime.
cache = "Aud::SampleCache::"
segment = "Aud::SampleCacheSegment::"
level = "Aud::DynamicLevelControl::DynamicLevelApplyingIteratorBase::"
imports = {
    r"Aud::LoopModesDespatcherInstance<.*>::get\(\)": 14,
    cache + r"(Forward|Reverse)Iterator::\1Iterator\(Cookie const&, long, bool, .*": 2,
    cache + r"(Forward|Reverse)Iterator::~\1Iterator\(\)": 2,
    cache + r"(Forward|Reverse)Iterator::internal_inc_moveToNextSegment\(\)": 2,
    cache + r"(Forward|Reverse)Iterator::internal_incrementAudioUnderrunCounter\(\) const": 2,
    cache + r"ForwardIterator::internal_inc_hitFirstSegment\(\)": 1,
    cache + r"ReverseIterator::internal_inc_hitLastSegment\(\)": 1,
    segment + r"SampleCacheSegment\(.*\)": 2,
    segment + r"~SampleCacheSegment\(\)": 1,
    segment + r"operator=\(Aud::SampleCacheSegment const&\)": 1,
    segment + r"(status|pSamples|length|getRequestCompletedEvent)\(\) const": 4,
    level + r"DynamicLevelApplyingIteratorBase\(.*\)": 1,
    level + r"moveToNextNode(Forwards|Reverse)\(\)": 2,
    r"Aud::Filter::Biquad::(processSample\(float\)|getLastProcessSampleResult\(\))": 2,
    r"Aud::GainCurve::(MixerStyleLog1|ConstantPower1)_Private::UVal2Mag_CurveNodes": 2,
    r"Orv::Image::FormatUID::~?FormatUID\(.*\)": 2,
    r"ce_handle::get_strip_cookie\(\) const": 1,
    r"OS\(\)": 1,
    r"config_double\(char const\*, double\)": 1,
    r"resample_open|resample_process": 2,
}
runtime = re.compile(r"\w+@(GLIBC|GLIBCXX|CXXABI|GCC)_.*|_ITM_\w+|__gmon_start__")
counts = collections.Counter()
for mangled, name in symbols("--undefined-only"):
    matching = [pattern for pattern in imports if re.fullmatch(pattern, name)]
    check(len(matching) == 1 or runtime.fullmatch(mangled), f"needs {name}")
    counts.update(matching)
for pattern, count in imports.items():
    check(counts[pattern] == count, f"needs {counts[pattern]}, not {count}, of {pattern}")


def check_what_ships():
    """Own functions are bound here; the one variable is looked up, because a program may hold a copy."""
    relocations = [line.split() for line in lines_of("readelf", "-rW", library) if "R_X86_64_" in line]
    own = {mangled for mangled, _ in defined}
    looked_up = {fields[4].split("@")[0] for fields in relocations if fields[2] != "R_X86_64_RELATIVE"}
    check(len(relocations) <= 120, f"has {len(relocations)} dynamic relocations")
    check(looked_up & own == {"cfgAudioPlaybackSpeedLimit"}, f"looks its own symbols up: {looked_up & own}")

    # One more initialiser is the toolchain's frame_dummy.
    sections = {fields[0]: fields for fields in
                (line[6:].split() for line in lines_of("readelf", "-SW", library) if line.startswith("  ["))}
    initialisers = int(sections[".init_array"][4], 16) // 8
    check(initialisers == 11, f"has {initialisers - 1} initialisers besides the toolchain's")
    check(".rela.plt" not in sections, "calls through a procedure linkage table")
    print(f"{len(relocations)} dynamic relocations")


if ships:
    check_what_ships()
for problem in problems[:20]:
    print("the library", problem)
print(f"{len(defined)} symbols exported, {len(problems)} problems")
sys.exit(bool(problems))
