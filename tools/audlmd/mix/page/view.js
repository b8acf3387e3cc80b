// The part of the timeline that is shown, from sample `from` to `to`, and the cursor.

const view = { from: 0, to: data.length };
const shortestView = Math.min(data.length, 64);

let cursorAt = data.wave ? data.wave.from : 0;

function show(from, to) {
    const length = Math.min(Math.max(to - from, shortestView), data.length);
    view.from = Math.min(Math.max(from, 0), data.length - length);
    view.to = view.from + length;
    drawSoon();
}

function zoom(factor, around = cursorIsShown() ? cursorAt : (view.from + view.to) / 2) {
    const length = Math.min(Math.max((view.to - view.from) * factor, shortestView), data.length);
    const share = (around - view.from) / (view.to - view.from);
    show(around - share * length, around + (1 - share) * length);
}

function scrollBy(samples) {
    show(view.from + samples, view.to + samples);
}

function cursorIsShown() {
    return cursorAt >= view.from && cursorAt <= view.to;
}

/// Shows a place of the timeline; zooms out where the place is longer than the view.
function showPlace(from, to) {
    const length = Math.max(view.to - view.from, (to - from) * 1.2);
    if (from < view.from || to > view.to) show((from + to - length) / 2, (from + to + length) / 2);
}

/// While the mix is played: turns over a page when the cursor leaves the view.
function followCursor() {
    if (!cursorIsShown()) show(cursorAt - (view.to - view.from) * 0.05, cursorAt + (view.to - view.from) * 0.95);
}
