// Draws lanes. A pencil draws on one canvas, whose x axis is the view; lengths are CSS pixels.

let colours = {};

function readColours() {
    const style = getComputedStyle(document.documentElement);
    const names = ["paper", "text", "soft", "grid", "lane", "clip", "edge", "wave", "fade", "level", "marker", "trouble", "cursor", "chosen"];
    colours = Object.fromEntries(names.map((name) => [name, style.getPropertyValue("--" + name).trim()]));
}

class Pencil {
    constructor(canvas, span = view) {
        const ratio = window.devicePixelRatio || 1;
        this.span = span;
        this.width = canvas.clientWidth;
        this.height = canvas.clientHeight;
        const [width, height] = [Math.round(this.width * ratio), Math.round(this.height * ratio)];
        if (canvas.width !== width || canvas.height !== height) [canvas.width, canvas.height] = [width, height];
        this.context = canvas.getContext("2d");
        this.context.setTransform(ratio, 0, 0, ratio, 0, 0);
        this.context.clearRect(0, 0, this.width, this.height);
        this.context.font = "12px system-ui, 'DejaVu Sans', sans-serif";
    }

    x(sample) {
        return ((sample - this.span.from) / (this.span.to - this.span.from)) * this.width;
    }

    sample(x) {
        return this.span.from + (x / this.width) * (this.span.to - this.span.from);
    }

    fill(colour, left, top, width, height) {
        this.context.fillStyle = colour;
        this.context.fillRect(left, top, width, height);
    }

    line(colour, width, points) {
        this.context.strokeStyle = colour;
        this.context.lineWidth = width;
        this.context.beginPath();
        for (const [x, y] of points) this.context.lineTo(x, y);
        this.context.stroke();
    }

    hatch(left, top, width, height) {
        const context = this.context;
        context.save();
        context.beginPath();
        context.rect(left, top, width, height);
        context.clip();
        context.globalAlpha = 0.15;
        this.fill(colours.trouble, left, top, width, height);
        context.globalAlpha = 1;
        for (let x = left - height - ((left - height) % 6); x < left + width; x += 6)
            this.line(colours.trouble, 0.7, [[x, top + height], [x + height, top]]);
        context.restore();
    }

    /// As much of the text as fits.
    write(text, colour, left, middle, room) {
        const context = this.context;
        context.textBaseline = "middle";
        context.fillStyle = colour;
        if (context.measureText(text).width > room) {
            let length = text.length;
            while (length > 0 && context.measureText(text.slice(0, length) + "\u2026").width > room) length = Math.floor(length * 0.85);
            if (length === 0) return 0;
            text = text.slice(0, length) + "\u2026";
        }
        context.fillText(text, left, middle);
        return context.measureText(text).width;
    }
}

/// Times for gridlines: some 100 pixels apart, with the digits of a second that tell them apart.
function ticks(pencil) {
    const seconds = (pencil.span.to - pencil.span.from) / data.sampleRate;
    const wanted = (seconds * 100) / Math.max(pencil.width, 1);
    const steps = [];
    for (const unit of [1e-4, 1e-3, 1e-2, 0.1, 1]) for (const times of [1, 2, 5]) steps.push(unit * times);
    steps.push(10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 36000, 86400);
    const step = steps.find((each) => each >= wanted) || 86400;
    const digits = step >= 1 ? 0 : Math.min(4, Math.ceil(-Math.log10(step) - 1e-9));
    const list = [];
    const first = Math.ceil(pencil.span.from / data.sampleRate / step);
    for (let n = first; n * step * data.sampleRate <= pencil.span.to; ++n) list.push(n * step * data.sampleRate);
    return { list, digits };
}

function drawGrid(pencil) {
    for (const sample of ticks(pencil).list) pencil.fill(colours.grid, Math.round(pencil.x(sample)), 0, 1, pencil.height);
}

function drawMarkerLines(pencil) {
    for (const marker of data.markers) pencil.fill(colours.marker, Math.round(pencil.x(marker.at)), 0, 1, pencil.height);
}

function drawRuler(canvas) {
    const pencil = new Pencil(canvas);
    const { list, digits } = ticks(pencil);
    const middle = pencil.height - 12;
    for (const sample of list) {
        const x = pencil.x(sample);
        pencil.fill(colours.soft, Math.round(x), pencil.height - 5, 1, 5);
        const text = clock(sample, digits);
        const width = pencil.context.measureText(text).width;
        if (x + width / 2 < pencil.width) pencil.write(text, colours.soft, Math.max(x - width / 2, 0), middle, width + 1);
    }
    // Names stand in two rows; those without room are left out, and are listed below.
    const ends = [-1, -1];
    for (const marker of [...data.markers].sort((a, b) => a.at - b.at)) {
        const x = pencil.x(marker.at);
        if (x < 0 || x > pencil.width) continue;
        pencil.fill(colours.marker, Math.round(x), 0, 1.5, pencil.height);
        const row = ends.findIndex((end) => end <= x);
        if (row < 0) continue;
        const room = Math.min(180, pencil.width - x - 4);
        ends[row] = x + 10 + pencil.write(marker.name, colours.marker, x + 4, 8 + 13 * row, room);
    }
}

function drawClipWave(pencil, clip, left, right, top, height) {
    const context = pencil.context;
    const middle = top + height / 2;
    context.fillStyle = colours.wave;
    context.beginPath();
    for (let x = Math.floor(left); x < right; ++x) {
        const peak = peakOf(clip, Math.max(pencil.sample(x), clip.span[0]), Math.min(pencil.sample(x + 1), clip.span[1]));
        const half = Math.max((peak * height) / 2, 0.3);
        context.rect(Math.max(x, left), middle - half, 1, 2 * half);
    }
    context.fill();
}

/// u-values: silence at the foot, 0 dB at two thirds, +10 dB at the top.
function drawFaderLine(pencil, points, colour, width, top, height) {
    const highest = 1.5;
    pencil.line(colour, width, points.map(([sample, u]) => [pencil.x(sample), top + height - (u / 1000 / highest) * height]));
}

function boxOf(clip, pencil) {
    const rows = Math.min(clip.rows, 4);
    const height = (pencil.height - 6) / rows;
    const left = pencil.x(clip.span[0]);
    return { left, right: Math.max(pencil.x(clip.span[1]), left + 1), top: 3 + (clip.row % rows) * height, height: height - (rows > 1 ? 2 : 0) };
}

function drawClip(pencil, clip, chosen) {
    const box = boxOf(clip, pencil);
    if (box.right < 0 || box.left > pencil.width) return;
    const [left, right] = [Math.max(box.left, -2), Math.min(box.right, pencil.width + 2)];
    const head = box.height < 34 ? 0 : 15;
    const [top, height] = [box.top + head, box.height - head - 2];
    const context = pencil.context;
    context.save();
    context.beginPath();
    context.rect(left, box.top, right - left, box.height);
    context.clip();
    pencil.fill(chosen ? colours.chosen : colours.clip, left, box.top, right - left, box.height);
    if (clip.peaks) drawClipWave(pencil, clip, left, right, top, height);
    if (right - left > 8) {
        if (clip.level) drawFaderLine(pencil, clip.level, colours.level, 1.8, top, height);
        if (clip.fade) drawFaderLine(pencil, clip.fade, colours.fade, 1.2, top, height);
    }
    const silent = clip.failure ? [clip.span] : clip.silent || [];
    for (const [from, to] of silent) pencil.hatch(pencil.x(from), top, Math.max(pencil.x(to) - pencil.x(from), 1), height);
    for (const [from, to] of clip.overloads || []) pencil.fill(colours.trouble, pencil.x(from), top, Math.max(pencil.x(to) - pencil.x(from), 1), 3);
    const shown = (clip.meantSilent ? "silent: " : clip.failure ? clip.failure + ": " : "") + clip.name;
    const colour = clip.failure ? colours.trouble : clip.meantSilent ? colours.soft : colours.text;
    if (head && right - left > 14) {
        const used = pencil.write(shown, colour, left + 5, box.top + 8, right - left - 10);
        if (clip.note && used) pencil.write(clip.note, colours.soft, left + 13 + used, box.top + 8, right - left - used - 20);
    }
    context.restore();
    context.strokeStyle = clip.failure ? colours.trouble : chosen ? colours.cursor : colours.edge;
    context.lineWidth = 1;
    if (right - left > 3) context.strokeRect(Math.round(left) + 0.5, Math.round(box.top) + 0.5, Math.round(right - left) - 1, Math.round(box.height) - 1);
}

function drawTrack(canvas, track) {
    const pencil = new Pencil(canvas);
    drawGrid(pencil);
    drawMarkerLines(pencil);
    for (const clip of track.clips) if (clip !== chosenClip) drawClip(pencil, clip, false);
    if (chosenClip && chosenClip.track === track) drawClip(pencil, chosenClip, true);
}

function paintMix(pencil) {
    const middle = pencil.height / 2;
    const scale = (middle - 3) / 127;
    for (let x = 0; x < pencil.width; ++x) {
        const wave = waveOf(pencil.sample(x), pencil.sample(x + 1));
        if (!wave) continue;
        const [low, high] = wave;
        const over = high > 100 || low < -100;
        pencil.fill(over ? colours.trouble : colours.wave, x, middle - high * scale, 1, Math.max((high - low) * scale, 0.6));
    }
}

function drawMix(canvas) {
    const pencil = new Pencil(canvas);
    drawGrid(pencil);
    drawMarkerLines(pencil);
    paintMix(pencil);
    const scale = (pencil.height / 2 - 3) / 127;
    for (const sign of [-1, 1]) pencil.fill(colours.soft, 0, pencil.height / 2 + sign * 100 * scale, pencil.width, 0.5);
}

const quietest = -60;

function drawLoudness(canvas) {
    const pencil = new Pencil(canvas);
    drawGrid(pencil);
    drawMarkerLines(pencil);
    const y = (value) => 4 + (pencil.height - 8) * Math.min(Math.max(value / quietest, 0), 1);
    for (const level of [0, -10, -20, -30, -40, -50]) {
        pencil.fill(colours.grid, 0, Math.round(y(level)), pencil.width, 1);
        if (level % 20 === 0) pencil.write(String(level).replace("-", "\u2212"), colours.soft, 3, y(level) + (level ? 0 : 6), 40);
    }
    for (const [kind, colour, width] of [["momentary", colours.soft, 0.8], ["shortTerm", colours.wave, 2]]) {
        const course = data.loudness[kind];
        const points = [];
        const perValue = data.loudness.secondsPerValue * data.sampleRate;
        const first = Math.max(0, Math.floor((view.from - endOfWindow(kind, 0)) / perValue) - 1);
        for (let n = first; n < course.length && endOfWindow(kind, n - 1) <= view.to; ++n)
            points.push([pencil.x(endOfWindow(kind, n)), y(course[n] === null ? quietest : course[n])]);
        pencil.line(colour, width, points);
    }
    if (data.loudness.integrated !== null)
        pencil.line(colours.level, 1, [[0, y(data.loudness.integrated)], [pencil.width, y(data.loudness.integrated)]]);
}

function drawOverview(canvas) {
    const pencil = new Pencil(canvas, { from: 0, to: data.length });
    pencil.fill(colours.lane, 0, 0, pencil.width, pencil.height);
    if (data.wave) paintMix(pencil);
    else
        for (const track of data.tracks)
            for (const clip of track.clips) {
                const height = pencil.height / data.tracks.length;
                pencil.fill(colours.edge, pencil.x(clip.span[0]), track.number * height, Math.max(pencil.x(clip.span[1]) - pencil.x(clip.span[0]), 1), Math.max(height - 1, 0.5));
            }
    for (const problem of data.problems)
        if (problem.isFault)
            for (const [from, to] of problem.places) pencil.fill(colours.trouble, pencil.x(from), pencil.height - 3, Math.max(pencil.x(to) - pencil.x(from), 2), 3);
    const [left, right] = [pencil.x(view.from), pencil.x(view.to)];
    pencil.context.globalAlpha = 0.55;
    pencil.fill(colours.paper, 0, 0, left, pencil.height);
    pencil.fill(colours.paper, right, 0, pencil.width - right, pencil.height);
    pencil.context.globalAlpha = 1;
    pencil.context.strokeStyle = colours.soft;
    pencil.context.strokeRect(left + 0.5, 0.5, Math.max(right - left - 1, 1), pencil.height - 1);
}
