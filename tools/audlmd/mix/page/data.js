// What the page shows: the data of its JSON block, with waveforms as numbers.

const data = JSON.parse(document.getElementById("data").textContent);

function bytesOf(text) {
    const binary = atob(text);
    const bytes = new Uint8Array(binary.length);
    for (let n = 0; n < bytes.length; ++n) bytes[n] = binary.charCodeAt(n);
    return bytes;
}

const samplesPerColumn = data.length / data.columns;

for (const [number, track] of data.tracks.entries()) {
    track.number = number;
    for (const clip of track.clips) {
        clip.track = track;
        clip.peaks = clip.peaks ? bytesOf(clip.peaks) : null;
        clip.firstColumn = Math.floor(clip.span[0] / samplesPerColumn);
    }
}

if (data.wave) {
    data.wave.low = new Int8Array(bytesOf(data.wave.low).buffer);
    data.wave.high = new Int8Array(bytesOf(data.wave.high).buffer);
}

/// h:mm:ss with so many digits of a second.
function clock(samples, digits = 3) {
    const unit = 10 ** digits;
    const units = Math.round((Math.abs(samples) / data.sampleRate) * unit);
    const seconds = Math.floor(units / unit);
    const two = (number) => String(number).padStart(2, "0");
    const whole = `${Math.floor(seconds / 3600)}:${two(Math.floor(seconds / 60) % 60)}:${two(seconds % 60)}`;
    const rest = digits > 0 ? "." + String(units % unit).padStart(digits, "0") : "";
    return (samples < 0 && units > 0 ? "\u2212" : "") + whole + rest;
}

/// The highest peak, 0 to 1, of a clip's file between two output samples.
function peakOf(clip, from, to) {
    const first = Math.max(0, Math.floor(from / samplesPerColumn) - clip.firstColumn);
    const last = Math.min(clip.peaks.length - 1, Math.ceil(to / samplesPerColumn) - 1 - clip.firstColumn);
    let peak = first < clip.peaks.length ? clip.peaks[first] : 0;
    for (let column = first + 1; column <= last; ++column) peak = Math.max(peak, clip.peaks[column]);
    return peak / 255;
}

/// The lowest and the highest sample of the mix between two output samples, in hundredths; null outside.
function waveOf(from, to) {
    const wave = data.wave;
    const first = Math.max(0, Math.floor((from - wave.from) / wave.step));
    const last = Math.min(wave.low.length - 1, Math.max(first, Math.ceil((to - wave.from) / wave.step) - 1));
    if (first > last || to <= wave.from) return null;
    let low = 0;
    let high = 0;
    for (let n = first; n <= last; ++n) {
        low = Math.min(low, wave.low[n]);
        high = Math.max(high, wave.high[n]);
    }
    return [low, high];
}

/// Where values of a course of loudness end, in output samples, by their number. A value of each kind is that of
/// a window which ends there.
const windows = { momentary: 0.4, shortTerm: 3 };

function endOfWindow(kind, number) {
    return data.wave.from + (windows[kind] + number * data.loudness.secondsPerValue) * data.sampleRate;
}

function loudnessAt(kind, sample) {
    const seconds = (sample - data.wave.from) / data.sampleRate - windows[kind];
    return data.loudness[kind][Math.floor(seconds / data.loudness.secondsPerValue + 1e-6)];
}

function loudnessText(value) {
    return value === undefined ? "\u2014" : value === null ? "\u2212\u221e" : value.toFixed(1).replace("-", "\u2212");
}
