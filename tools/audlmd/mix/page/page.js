// Puts the page together, and listens to keys.

function aboutText() {
    const clips = data.tracks.reduce((sum, track) => sum + track.clips.length, 0);
    const counted = (count, thing) => `${count} ${thing}${count === 1 ? "" : "s"}`;
    const parts = [
        data.sound && data.sound.name,
        clock(data.length),
        `${counted(clips, "clip")} on ${counted(data.tracks.length + data.tracksLeftOut, "track")}`,
        counted(data.channels, "channel"),
        `${data.sampleRate} Hz`,
        data.timeReference ? `starts at ${clock(data.timeReference)}` : "",
        data.loudnessFailure,
    ];
    return parts.filter(Boolean).join(" \u00b7 ");
}

const keys = {
    " ": togglePlay,
    ArrowLeft: (event) => seekAndShow(cursorAt - (event.shiftKey ? 10 : 1) * data.sampleRate),
    ArrowRight: (event) => seekAndShow(cursorAt + (event.shiftKey ? 10 : 1) * data.sampleRate),
    Home: () => seekAndShow(0),
    End: () => seekAndShow(data.length),
    "+": () => zoom(0.5),
    "=": () => zoom(0.5),
    "-": () => zoom(2),
    0: () => show(0, data.length),
    n: () => nextProblem(1),
    p: () => nextProblem(-1),
};

function seekAndShow(sample) {
    seek(sample);
    showPlace(cursorAt, cursorAt);
}

/// Enter presses what has the focus; space does so on buttons above the timeline, and plays everywhere else.
function listenToKeys() {
    document.addEventListener("keydown", (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        if (event.key === " " && event.target.closest("#transport button, summary")) return;
        const action = keys[event.key.length === 1 ? event.key.toLowerCase() : event.key];
        if (!action) return;
        event.preventDefault();
        action(event);
    });
}

function begin() {
    document.title = data.title;
    document.getElementById("title").textContent = data.title;
    document.getElementById("about").textContent = aboutText();
    timeline.setAttribute("aria-valuemax", (data.length / data.sampleRate).toFixed(3));
    readColours();
    addLanes();
    addProblems();
    addMarkers();
    addClips();
    listenToPointer();
    listenToKeys();
    const onClick = (id, action) => document.getElementById(id).addEventListener("click", action);
    onClick("play", togglePlay);
    onClick("previous", () => nextProblem(-1));
    onClick("next", () => nextProblem(1));
    onClick("in", () => zoom(0.5));
    onClick("out", () => zoom(2));
    onClick("all", () => show(0, data.length));
    openSound();
    tellPosition();
    new ResizeObserver(drawSoon).observe(timeline);
    // The ruler sticks below the bar, which may have several lines.
    const bar = document.getElementById("transport");
    new ResizeObserver(() => document.documentElement.style.setProperty("--bar", `${bar.offsetHeight}px`)).observe(bar);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
        readColours();
        drawSoon();
    });
    drawSoon();
}

begin();
