"""broken_hosts.py ROOT FOLDER CHECK COMPILER...: breaks the minimal host of the documents at one place after the other, and
fails where audlmd-host-check finds another rule broken than the one that was, or none. The hosts are kept in FOLDER until
something of which they are made changes.
"""

import concurrent.futures
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys

docs, kept, check = pathlib.Path(sys.argv[1]) / "docs", pathlib.Path(sys.argv[2]), sys.argv[3]
compiler = [*sys.argv[4:], "-fPIC"]
SOURCE, HOOKS = (docs / "minimal_host.cpp").read_text(), (docs / "minimal_host_check.cpp").read_text()
FORWARD, REVERSE = "void Forward::internal_inc_moveToNextSegment() {", "void Reverse::internal_inc_moveToNextSegment() {"

# The rule; what the minimal host has, once; what a broken host has instead.
BROKEN = [
    ("", "", ""),
    ("operations", "float Filter::Biquad::getLastProcessSampleResult() {", "float unused(float lastResult_) {"),
    ("layout", "", "Cookie stripCookie_;\n    long more_ = 0;"), # in a header of the contract
    ("settings", "return defaultValue;", "return defaultValue + 1.0;"),
    ("formats", "number_(number) {}", "number_(number) { if (number > 1) throw 1; }"),
    ("counts", "fetch_sub(1) - 1;", "fetch_sub(1);"),
    ("counts", "std::atomic_ref(count).fetch_add(1);", "const int old = count; std::this_thread::yield(); count = old + 1;"),
    ("heap", "throw std::bad_alloc();", "return nullptr;"),
    ("heap", "std::max<std::size_t>(bytes, 1)", "std::min<std::size_t>(bytes, 24)"),
    ("notes", "void record(ExceptionNotes&) override {}", "void record(ExceptionNotes&) override { throw 1; }"),
    ("tables", "static typename Render", "thread_local typename Render"),
    ("identity", "{ return stripCookie_; }", "{ return {stripCookie_.material, 1, 1}; }"),
    ("empty", "    SampleCacheSegment copy(other);", "    if (!other.body_)\n        return *this;\n"
     "    SampleCacheSegment copy(other);"),
    ("start-forwards", "identity(cookie), cachePosition(position),",
     "identity(cookie), cachePosition(position + (position > 1999)),"),
    ("start-backwards", "cachePosition(position - 1)", "cachePosition(position - (position == 1234 ? 2 : 1))"),
    ("walk-forwards", FORWARD, FORWARD + " ++cachePosition;"),
    ("walk-forwards", FORWARD, FORWARD + " if (segmentIndex == 1000) return;"),
    ("walk-forwards", "stand(currentSegment, hostMaterial, 0)", "stand(currentSegment, hostMaterial, 1)"),
    ("walk-backwards", REVERSE, REVERSE + " --cachePosition;"),
    ("walk-backwards", "stand(currentSegment, hostMaterial, materialLength - 1)", "stand(currentSegment, hostMaterial, 0)"),
    ("waiting", "hostMaterial(find(cache, cookie)), waitForSegment(flag), hostSegmentsAhead",
     "hostMaterial(find(cache, cookie)), waitForSegment(true), hostSegmentsAhead"),
    ("gearing", "const Orv::OutputGearing&)\n    : identity(cookie), cachePosition(position - 1)",
     "const Orv::OutputGearing& g)\n    : identity(cookie), cachePosition(position - 1 - (g.sourceSamplesPerOutputSample < 0))"),
    ("unknown", "materials[cookie.channel].get() : nullptr", "materials[cookie.channel].get() : materials.front().get()"),
    ("status", "std::atomic<Aud::eSegmentStatus> status = Aud::eSegmentReady;",
     "struct {\n    Aud::eSegmentStatus first = Aud::eSegmentReady;\n    Aud::eSegmentStatus load() const { return first; }\n"
     "    void operator=(Aud::eSegmentStatus s) { first = first == Aud::eSegmentReady ? s : first; }\n} status;"),
    ("events", "signalled.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready",
     "signalled.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::deferred"),
    ("events", "const { return body_->material->held; }",
     "const { ++body_->material->event->referenceCount; return body_->material->held; }"),
    ("events", "signalled.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready",
     "milliseconds != noTimeLimit && signalled.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready"),
    ("events", "signalled.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready",
     "milliseconds != 0 && signalled.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready"),
    ("status", "std::atomic<Aud::eSegmentStatus> status = Aud::eSegmentReady;",
     "struct Status {\n    std::vector<float>& of;\n    std::atomic<Aud::eSegmentStatus> now = Aud::eSegmentReady;\n"
     "    Aud::eSegmentStatus load() const { return now; }\n"
     "    void operator=(Aud::eSegmentStatus s) { of[0] += s == Aud::eSegmentReady; now = s; }\n} status{samples};"),
    ("heap", "if (void* const storage = std::malloc(std::max<std::size_t>(bytes, 1)))",
     "static void* last;\n        if (bytes == 177)\n            return last;\n"
     "        if (void* const storage = last = std::malloc(std::max<std::size_t>(bytes, 1)))"),
    ("holders", "std::vector<std::shared_ptr<Material>> materials;",
     "struct Kept : std::shared_ptr<Material> {\n    Kept(std::shared_ptr<Material> m) : shared_ptr(std::move(m)) {}\n"
     "    void reset() { get()->samples[0] += 1.0F; shared_ptr::reset(); }\n};\n    std::vector<Kept> materials;"),
    ("underruns", "++static_cast<Material*>(material)->underruns", "static_cast<Material*>(material)->underruns += 2"),
    ("holders", "~SampleCacheSegment() { delete body_; }", "~SampleCacheSegment() {}"),
    ("holders", "    std::swap(body_, copy.body_);", "    body_ = copy.body_;\n    copy.body_ = nullptr;"),
    ("section", "{ return lastResult_; }", "{ return std::exchange(lastResult_, 0.0F); }"),
    ("section", "    return lastResult_ = static_cast<float>(y);", "    lastResult_ = static_cast<float>(y);\n"
     "    return lastResult_ * 2.0F;"),
    ("curves", "fill(power, 101, 0.01,", "fill(power, 101, 0.011,"),
    ("curves", "static_cast<float>(rise / spacing), 0.0F", "static_cast<float>(rise), 0.0F"),
    ("levels-forwards", "{ loadRamp(state_, 1U); }", "{ loadRamp(state_, 1U); state_.samplesToNextNode = 0; }"),
    ("levels-forwards", "{ loadRamp(state_, 1U); }", "{ loadRamp(state_, 1U); state_.uValueStep *= 0.5F; }"),
    ("levels-backwards", "{ loadRamp(state_, ~0U); }", "{ loadRamp(state_, 1U); }"),
    ("together", FORWARD, "static std::atomic<int> walkers;\n" + FORWARD + "\n    const int here = ++walkers;\n"
     "    std::this_thread::sleep_for(std::chrono::microseconds(100));\n    cachePosition += walkers != here;\n    --walkers;"),
    ("render", "double config_double(const char*, double defaultValue) { return defaultValue; }",
     "double config_double(const char* name, double value) { return *name == 'a' ? value : throw 1; }"),
]


def fault_of(number):
    rule, has, instead = BROKEN[number]
    if has and SOURCE.count(has) != 1:
        return f"the minimal host has {SOURCE.count(has)} times {has!r}"
    folder = kept / str(number)
    if not (folder / "libhost.so").exists():
        fault = compiled(folder, rule, has, instead)
        if fault:
            return fault
    done = subprocess.run([check, "libhost.so"], cwd=folder, capture_output=True, text=True)
    found = re.findall(r"^broken +(\S+):", done.stdout, re.M)
    waiting = re.findall(r"^unchecked +(\S+):", done.stdout, re.M)
    if found == ([rule] if rule else []) and done.returncode == (rule != "") and set(waiting) <= {"together", "render"}:
        return None
    return f"exit {done.returncode}, broken: {found}\n{done.stdout}{done.stderr}"


def compiled(folder, rule, has, instead):
    """What the compiler says where it refuses the host."""
    folder.mkdir(exist_ok=True)
    (folder / "minimal_host.cpp").write_text(SOURCE.replace(has, instead) if has else SOURCE)
    options = ["-include", kept / "headers.hpp"]
    if rule == "layout": # stands before the contract's own, and outside the headers that are compiled
        (folder / "contract").mkdir(exist_ok=True)
        identity = (docs.parent / "contract/Identity.hpp").read_text()
        (folder / "contract/Identity.hpp").write_text(identity.replace("Cookie stripCookie_;", instead))
        options = ["-I."]
    (folder / "minimal_host_check.cpp").write_text(HOOKS)
    done = subprocess.run([compiler[0], *options, *compiler[1:], "-shared", "minimal_host_check.cpp", "-o", "libhost.so"], cwd=folder,
                          capture_output=True, text=True)
    return done.stderr if done.returncode != 0 else None


def linked_fault():
    """A program that is linked with a host and the rules returns how many rules are broken: here, of a host, one."""
    folder = kept / str(next(number for number, host in enumerate(BROKEN) if host[0] == "heap"))
    program, library = folder / "linked", pathlib.Path(check).parent
    if not program.exists():
        subprocess.run([*compiler, "-Wl,--no-as-needed,-rpath," + str(library), pathlib.Path(__file__).parent / "LinkedHost.cpp", "-o", program,
                        folder / "libhost.so", *library.glob("libaudlmd_host_check.so")], check=True)
    done = subprocess.run([program], capture_output=True, text=True, env={**os.environ, "LD_LIBRARY_PATH": str(folder)})
    return None if done.returncode == 1 else f"exit {done.returncode}\n{done.stdout}{done.stderr}"


def called_wrongly():
    """What is said where no host is checked: exit status, and the beginning of what goes to which output."""
    usage = "audlmd-host-check HOST.so"
    for arguments, expected in ((["--help"], (0, usage, "")), ([], (2, "", usage)), (["-x"], (2, "", usage)),
                                (["a", "b"], (2, "", usage)), (["gone.so"], (2, "", "audlmd-host-check: gone.so: "))):
        done = subprocess.run([check, *arguments], capture_output=True, text=True)
        found = done.returncode, done.stdout[:len(expected[1]) or None], done.stderr[:len(expected[2]) or None]
        if found != expected:
            yield f"{arguments}: {found}"


def made_of():
    """A digest of all that the hosts are made of."""
    rooms = [docs.parent / room for room in ("contract", "ole", "loop_modes", "tools/hostcheck")]
    files = sorted(path for room in rooms for path in room.rglob("*") if path.suffix != ".cpp" and path.is_file())
    texts = [path.read_bytes() for path in [*files, pathlib.Path(__file__)]]
    return hashlib.sha256(b"".join(texts) + repr((SOURCE, HOOKS, compiler)).encode()).hexdigest()


digest = made_of()
if not (kept / "digest").exists() or (kept / "digest").read_text() != digest:
    shutil.rmtree(kept, ignore_errors=True)
    kept.mkdir()
    # Compiled once, because most of the time goes there.
    (kept / "headers.hpp").write_text("".join(re.findall(r"^#include [<\"](?!min).*\n", SOURCE + HOOKS, re.M)))
    subprocess.run([*compiler, "-x", "c++-header", kept / "headers.hpp", "-o", kept / "headers.hpp.gch"], check=True)
    (kept / "digest").write_text(digest)
with concurrent.futures.ThreadPoolExecutor(2) as workers:
    faults = list(workers.map(fault_of, range(len(BROKEN))))
listed = subprocess.run([check, "--list"], capture_output=True, text=True).stdout
untested = set(re.findall(r"^[a-z-]+", listed, re.M)) - {rule for rule, _, _ in BROKEN}
for (rule, has, _), fault in zip(BROKEN, faults):
    if fault:
        print(f"Broken at {rule} ({has}): {fault}")
others = [*filter(None, [linked_fault()]), *called_wrongly()]
print(*others, sep="\n")
print(f"{len(BROKEN)} hosts, {sum(map(bool, faults))} failures; rules without a broken host: {', '.join(untested) or 'none'}")
sys.exit(any(faults) or bool(untested) or bool(others))
