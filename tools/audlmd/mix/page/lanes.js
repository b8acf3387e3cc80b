// The rows of the timeline, and what the pointer does there.

const timeline = document.getElementById("timeline");
const lanes = document.getElementById("lanes");
const cursor = document.getElementById("cursor");
const hint = document.getElementById("hint");

/// Canvases with what draws them; those out of sight are not drawn.
const canvases = new Map();
let drawing = false;
let chosenClip = null;

function drawSoon() {
    if (drawing) return;
    drawing = true;
    requestAnimationFrame(() => {
        drawing = false;
        for (const lane of canvases.values()) if (lane.isSeen) lane.draw();
        placeCursor();
    });
}

const sight = new IntersectionObserver((entries) => {
    for (const entry of entries) {
        const lane = canvases.get(entry.target);
        lane.isSeen = entry.isIntersecting;
        // A canvas holds memory, and there may be hundreds.
        if (!lane.isSeen) entry.target.width = entry.target.height = 0;
    }
    drawSoon();
}, { rootMargin: "200px" });

function watch(canvas, draw) {
    canvases.set(canvas, { draw: () => draw(canvas), isSeen: false });
    sight.observe(canvas);
}

function element(name, text = "", className = "") {
    const made = document.createElement(name);
    made.textContent = text;
    if (className) made.className = className;
    return made;
}

function addRow(name, height, draw) {
    const row = element("div", "", "row");
    row.style.setProperty("--height", height + "px");
    const label = element("div", name, "name");
    const canvas = element("canvas");
    canvas.setAttribute("aria-hidden", "true");
    row.append(label, canvas);
    lanes.append(row);
    watch(canvas, draw);
    return { label, canvas };
}

function laneHeight(track) {
    const rows = Math.min(Math.max(1, ...track.clips.map((clip) => clip.rows)), 4);
    return Math.max(data.tracks.length > 12 ? 52 : 76, rows * 40 + 6);
}

function addLanes() {
    watch(document.querySelector("#overview canvas"), drawOverview);
    watch(document.querySelector("#ruler canvas"), drawRuler);
    for (const track of data.tracks) {
        const { label, canvas } = addRow(track.name, laneHeight(track), (each) => drawTrack(each, track));
        label.append(element("small", `${track.clips.length} ${track.clips.length === 1 ? "clip" : "clips"}`));
        canvas.track = track;
    }
    if (data.tracksLeftOut > 0) lanes.append(element("p", `Tracks that are not drawn: ${data.tracksLeftOut}`, "none"));
    if (data.wave) {
        const { label } = addRow("mix", 110, drawMix);
        const over = data.problems.some((problem) => problem.where.startsWith("channel "));
        label.append(element("small", over ? "over full scale, see below" : "lines: full scale", over ? "bad" : ""));
    }
    if (data.loudness) {
        const { label } = addRow("loudness", 120, drawLoudness);
        label.append(element("small", `integrated ${loudnessText(data.loudness.integrated)} LUFS`));
        label.append(element("small", `range ${loudnessText(data.loudness.range ?? undefined)} LU`));
        label.append(element("small", "thick: 3 s, thin: 0.4 s"));
    }
}

/// The width of the names beside the lanes, and that of the lanes, in pixels.
function lanesArea() {
    const canvas = document.querySelector("#ruler canvas");
    return { left: canvas.offsetLeft, width: canvas.clientWidth };
}

function placeCursor() {
    const area = lanesArea();
    const share = (cursorAt - view.from) / (view.to - view.from);
    cursor.hidden = share < 0 || share > 1;
    cursor.style.transform = `translateX(${area.left + share * area.width}px)`;
}

function sampleUnder(event) {
    const area = lanesArea();
    const x = event.clientX - timeline.getBoundingClientRect().left - area.left;
    return view.from + (x / area.width) * (view.to - view.from);
}

function clipUnder(event) {
    const canvas = event.target;
    if (!canvas.track) return null;
    const box = canvas.getBoundingClientRect();
    const [x, y] = [event.clientX - box.left, event.clientY - box.top];
    const pencil = { x: (sample) => ((sample - view.from) / (view.to - view.from)) * box.width, height: box.height };
    return canvas.track.clips.find((clip) => {
        const area = boxOf(clip, pencil);
        return x >= area.left && x <= area.right && y >= area.top && y <= area.top + area.height;
    }) || null;
}

function showHint(event) {
    const clip = event.pointerType === "mouse" ? clipUnder(event) : null;
    hint.hidden = !clip;
    if (!clip) return;
    const about = [clip.failure, clip.note, `${clock(clip.span[0])} \u2013 ${clock(clip.span[1])}`];
    hint.replaceChildren(element("span", clip.name), ...about.filter(Boolean).map((text) => element("small", text)));
    hint.style.left = Math.max(4, Math.min(event.clientX + 14, innerWidth - hint.offsetWidth - 8)) + "px";
    hint.style.top = Math.min(event.clientY + 16, innerHeight - hint.offsetHeight - 8) + "px";
}

/// Lanes are dragged; a press without a way is a click. On the ruler the cursor is dragged, on the overview
/// the view.
function listenToPointer() {
    let press = null;
    const centre = (event) => {
        const box = event.target.getBoundingClientRect();
        const middle = ((event.clientX - box.left) / box.width) * data.length;
        show(middle - (view.to - view.from) / 2, middle + (view.to - view.from) / 2);
    };
    timeline.addEventListener("pointerdown", (event) => {
        if (event.button !== 0 || event.target.tagName !== "CANVAS") return;
        const row = event.target.parentElement.id;
        press = { x: event.clientX, from: view.from, row, moved: false };
        event.target.setPointerCapture(event.pointerId);
        if (row === "ruler") seek(sampleUnder(event));
        if (row === "overview") centre(event);
    });
    timeline.addEventListener("pointermove", (event) => {
        if (!press) return showHint(event);
        press.moved ||= Math.abs(event.clientX - press.x) > 4;
        if (press.row === "ruler") seek(sampleUnder(event));
        else if (press.row === "overview") centre(event);
        else if (press.moved) {
            const length = view.to - view.from;
            const from = press.from - ((event.clientX - press.x) / lanesArea().width) * length;
            show(from, from + length);
        }
    });
    timeline.addEventListener("pointerup", (event) => {
        if (press && !press.moved && !press.row) {
            seek(sampleUnder(event));
            choose(clipUnder(event));
        }
        press = null;
    });
    timeline.addEventListener("pointercancel", () => { press = null; });
    timeline.addEventListener("pointerleave", () => { hint.hidden = true; });
    timeline.addEventListener("wheel", (event) => {
        const sideways = event.shiftKey && !event.deltaX ? event.deltaY : event.deltaX;
        if (event.ctrlKey) zoom(Math.exp(event.deltaY / 300), sampleUnder(event));
        else if (Math.abs(sideways) > Math.abs(event.shiftKey ? 0 : event.deltaY))
            scrollBy((sideways / lanesArea().width) * (view.to - view.from));
        else return;
        event.preventDefault();
    }, { passive: false });
}
