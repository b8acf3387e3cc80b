// What stands below the timeline: problems and markers to jump to, the chosen clip, and a table of all clips.

let currentProblem = -1;

function choose(clip) {
    chosenClip = clip;
    const details = document.getElementById("details");
    if (!clip) {
        details.replaceChildren(details.firstElementChild, element("p", "Click a clip, or choose one below."));
        return drawSoon();
    }
    const list = element("dl");
    for (const [name, text] of [["name", clip.name], ["track", clip.track.name], ...clip.details])
        list.append(element("dt", name), element("dd", text));
    details.replaceChildren(details.firstElementChild, list);
    drawSoon();
}

function jumpTo(from, to) {
    seek(from);
    showPlace(from, to);
}

/// Scrolls the list alone: the page stays where it is.
function showInList(button) {
    const [list, place] = [button.closest("ol").getBoundingClientRect(), button.getBoundingClientRect()];
    const beyond = Math.max(place.bottom - list.bottom, 0) + Math.min(place.top - list.top, 0);
    button.closest("ol").scrollTop += beyond;
}

function showLane(number) {
    lanes.children[number].scrollIntoView({ block: "nearest" });
}

/// Jumps to a problem; to its next place, where it is the current one.
function jumpToProblem(number) {
    const problem = data.problems[number];
    problem.place = number === currentProblem ? ((problem.place || 0) + 1) % Math.max(problem.places.length, 1) : 0;
    currentProblem = number;
    for (const [n, button] of document.querySelectorAll("#problems .jump").entries())
        button.classList.toggle("current", n === number);
    showInList(document.querySelector("#problems .current"));
    if (problem.clip) choose(data.tracks[problem.clip[0]].clips[problem.clip[1]]);
    if (problem.clip) showLane(problem.clip[0]);
    if (problem.places.length > 0) jumpTo(...problem.places[problem.place]);
}

function nextProblem(step) {
    if (data.problems.length === 0) return;
    const count = data.problems.length;
    jumpToProblem(currentProblem < 0 ? (step > 0 ? 0 : count - 1) : (currentProblem + step + count) % count);
}

function jumpButton(time, text, strong, jump) {
    const button = element("button", "", "jump");
    button.type = "button";
    const about = element("span");
    if (strong) about.append(element("b", strong), " ");
    about.append(text);
    button.append(element("span", time, "at"), about);
    button.addEventListener("click", jump);
    const item = element("li");
    item.append(button);
    return item;
}

function addProblems() {
    const list = document.getElementById("problems");
    const faults = data.problems.filter((problem) => problem.isFault).length;
    const notes = data.problems.length - faults;
    document.getElementById("problems-title").textContent =
        `${faults} ${faults === 1 ? "problem" : "problems"}` + (notes ? `, ${notes} ${notes === 1 ? "note" : "notes"}` : "");
    for (const [number, problem] of data.problems.entries()) {
        const time = problem.places.length > 0 ? clock(problem.places[0][0]) : "";
        const times = problem.places.length > 1 ? ` (${problem.places.length} places)` : "";
        const item = jumpButton(time, `${problem.where}: ${problem.text}${times}`, problem.kind, () => jumpToProblem(number));
        item.firstElementChild.classList.toggle("fault", problem.isFault);
        list.append(item);
    }
    if (data.problems.length === 0) list.append(element("li", data.wave ? "The report has nothing to tell." : "Nothing is known before the timeline is mixed.", "none"));
    for (const id of ["previous", "next"]) document.getElementById(id).disabled = data.problems.length === 0;
}

function addMarkers() {
    const list = document.getElementById("markers");
    for (const marker of [...data.markers].sort((a, b) => a.at - b.at))
        list.append(jumpButton(clock(marker.at), marker.name || "(no name)", "", () => jumpTo(marker.at, marker.at)));
    if (data.markers.length === 0) list.append(element("li", "None.", "none"));
}

/// Made when it is opened first: there may be thousands.
function addClips() {
    const clips = document.getElementById("clips");
    clips.addEventListener("toggle", () => {
        if (clips.querySelector("table")) return;
        const table = element("table");
        const head = table.createTHead().insertRow();
        for (const title of ["track", "clip", "from", "to", ""]) head.append(element("th", title));
        const body = table.createTBody();
        for (const track of data.tracks)
            for (const clip of track.clips) {
                const row = body.insertRow();
                const button = element("button", clip.name);
                button.type = "button";
                button.addEventListener("click", () => {
                    choose(clip);
                    jumpTo(...clip.span);
                    showLane(track.number);
                });
                row.insertCell().textContent = track.name;
                row.insertCell().append(button);
                row.insertCell().textContent = clock(clip.span[0]);
                row.insertCell().textContent = clock(clip.span[1]);
                row.insertCell().textContent = [clip.failure, clip.note].filter(Boolean).join(", ");
            }
        clips.append(table);
    });
}
