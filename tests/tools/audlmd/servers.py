"""servers.py AUDLMD pulseaudio|jack: live playback through a sound server of this script's own, without a sound card.

Exit status 77, which is a skipped test, where the server is not installed.
"""

import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import wave

in_time = "late: 0 samples in 0 episodes; starved: 0 frames in 0 episodes; device: 0 underruns\n"


def require_installed(*programs):
    missing = [program for program in programs if shutil.which(program) is None]
    if missing:
        print("not installed:", *missing)
        sys.exit(77)


def start(*command):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    servers.append(process)


def soon(condition):
    for _ in range(1000):
        if condition():
            return True
        time.sleep(0.01)
    return False


def audlmd(*options):
    run = subprocess.run([command, *options], capture_output=True, text=True)
    if run.returncode != 0:
        raise RuntimeError(run.stderr)
    return run.stdout


def has_jack():
    """There is no device at all before the server has started."""
    run = subprocess.run([command, "play", "--list-devices"], capture_output=True, text=True)
    return run.stdout.startswith("* system  (JACK")


def write_noise(frames):
    with wave.open("a.wav", "wb") as sound:
        sound.setparams((2, 2, 48000, 0, "NONE", ""))
        sound.writeframes(random.Random(1).randbytes(4 * frames))


def play_in_time(options):
    """A machine that is too busy to load in time says so, and may play once more in all."""
    global retries
    while (told := audlmd("play", "--latency", "1000", "a.wav", *options)) != in_time:
        retries += 1
        assert retries == 1, told


def test_pulseaudio():
    """The samples of render arrive at a null sink, whose monitor a recorder writes into a file."""
    require_installed("pulseaudio", "parec")
    pathlib.Path("asoundrc").write_text('pcm.!default { type pulse device "test" }\n')
    socket = pathlib.Path("server").absolute()
    heard = pathlib.Path("heard")
    os.environ.update(HOME=os.getcwd(), PULSE_RUNTIME_PATH=os.getcwd(), PULSE_SERVER=f"unix:{socket}")
    start("pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1", "--disable-shm=yes",
          "-L", f"module-native-protocol-unix auth-anonymous=1 socket={socket}",
          "-L", "module-null-sink sink_name=test format=float32le rate=48000 channels=2")
    assert soon(socket.exists), "pulseaudio has not started"
    start("parec", "--device=test.monitor", "--format=float32le", "--rate=48000", "--channels=2", "--raw", heard)
    assert soon(lambda: heard.exists() and heard.stat().st_size > 0), "parec does not record"
    write_noise(40000)
    for options in [], ["--reverse"], ["--speed", "1.1", "--converter", "filtering", "--gain", "-3"]:
        audlmd("render", "a.wav", "-o", "a.raw", "--format", "f32", *options)
        # The first frames fade in.
        rendered = pathlib.Path("a.raw").read_bytes()[8 * 240:]
        play_in_time(options)
        assert soon(lambda: rendered in heard.read_bytes()), f"other samples with {options}"


def test_jack():
    """The dummy driver plays on while the command stands still, and the command counts that."""
    require_installed("jackd")
    # Without a device of ALSA's, JACK has the default one.
    pathlib.Path("asoundrc").write_text("pcm.unusable.word 1\n")
    server = f"audlmd-test-{os.getpid()}"
    os.environ.update(JACK_DEFAULT_SERVER=server, JACK_NO_START_SERVER="1", JACK_NO_AUDIO_RESERVATION="1")
    start("jackd", "--no-realtime", "--name", server, "--timeout", "5000", "-d", "dummy", "-r", "48000", "-p", "256")
    assert soon(has_jack), "jackd has not started"
    write_noise(96000)
    player = subprocess.Popen([command, "play", "a.wav"], stdout=subprocess.PIPE, text=True)
    time.sleep(1.0)
    player.send_signal(signal.SIGSTOP)
    time.sleep(0.2)
    player.send_signal(signal.SIGCONT)
    told = player.communicate()[0]
    assert player.returncode == 0 and re.search("device: [1-9][0-9]* underrun", told), told


command, which = sys.argv[1:]
retries = 0
servers = []
with tempfile.TemporaryDirectory(prefix="audlmd-test-") as folder:
    os.chdir(folder)
    os.environ["ALSA_CONFIG_PATH"] = os.path.join(folder, "asoundrc")
    try:
        {"pulseaudio": test_pulseaudio, "jack": test_jack}[which]()
    finally:
        for server in servers:
            server.terminate()
            server.wait()
