// The mix to listen to: an audio element, and the cursor that moves with it.

const audio = document.createElement("audio");
audio.preload = "auto";
const playButton = document.getElementById("play");
const message = document.getElementById("message");

function tellPosition() {
    document.getElementById("time").value = clock(cursorAt);
    timeline.setAttribute("aria-valuenow", (cursorAt / data.sampleRate).toFixed(3));
    timeline.setAttribute("aria-valuetext", clock(cursorAt));
    if (data.loudness)
        document.getElementById("level").value = `${loudnessText(loudnessAt("shortTerm", cursorAt))} LUFS in 3 s`;
    placeCursor();
}

/// Where there is a mix, the cursor stays inside.
function seek(sample) {
    const [from, to] = data.wave ? [data.wave.from, data.wave.to] : [0, data.length];
    cursorAt = Math.min(Math.max(sample, from), to);
    if (canPlay()) audio.currentTime = (cursorAt - from) / data.sampleRate;
    tellPosition();
}

function canPlay() {
    return !playButton.disabled;
}

function togglePlay() {
    if (!canPlay()) return;
    if (audio.paused) audio.play().catch(refuseSound);
    else audio.pause();
}

function moveWithSound() {
    cursorAt = Math.min(data.wave.from + audio.currentTime * data.sampleRate, data.wave.to);
    followCursor();
    tellPosition();
    if (!audio.paused) requestAnimationFrame(moveWithSound);
}

function refuseSound() {
    playButton.disabled = true;
    message.textContent = `This browser cannot play \u201c${data.sound.name}\u201d: the file does not stand where it stood beside this page, or the browser does not know its kind. Browsers play .wav up to 4 GB, .flac and .ogg.`;
}

function openSound() {
    if (!data.sound) {
        message.textContent = data.wave
            ? "The mix was written into a pipe: there is nothing to play here."
            : "Nothing was mixed for this page: it shows the timeline alone. Name the output with -o to hear it here.";
        return;
    }
    playButton.disabled = false;
    audio.addEventListener("error", refuseSound);
    audio.addEventListener("play", () => {
        playButton.textContent = "Stop";
        playButton.setAttribute("aria-pressed", "true");
        moveWithSound();
    });
    audio.addEventListener("pause", () => {
        playButton.textContent = "Play";
        playButton.setAttribute("aria-pressed", "false");
    });
    audio.src = data.sound.url;
    document.body.append(audio);
}
