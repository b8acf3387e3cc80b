#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace audlmd {

/// What the renderer relies on, in words.
struct Rule {
    std::string_view name;
    std::string_view sentence;
};

/// In the order of the checks. Whoever runs them in processes of their own knows the rules without a host.
inline constexpr auto hostRules = std::to_array<Rule>({
    {"operations", "The host defines every operation that the contract declares."},
    {"layout",
     "The host is compiled with the sizes of the contract's types that the renderer is compiled with."},
    {"settings", "A setting that nobody has made has the default that the caller gives."},
    {"formats", "A picture format can be announced and taken back, and announced again."},
    {"counts", "Holders are counted up and down by one, atomically, and the holders left are returned."},
    {"heap",
     "The heap gives storage of its own to everybody, or throws std::bad_alloc, and never returns null."},
    {"notes", "Taking notes on an exception throws nothing, and leaves notes that can be read."},
    {"tables",
     "Each output type has one despatch table, which keeps what libraries register while they are loaded."},
    {"identity", "A strip's handle names the material that readers are made with, and so do its copies."},
    {"empty", "Outside the material a reader holds the empty handle, which is neither ready nor requested."},
    {"start-forwards",
     "A forward reader made at a position reads that sample first, with its index in its segment."},
    {"start-backwards",
     "A reverse reader made for a sample reads that sample first, with its index in its segment."},
    {"walk-forwards",
     "Forward walks enter at sample 0, and lead to the first sample of the following segment."},
    {"walk-backwards",
     "Reverse walks enter at the last sample, and lead to the last one of the preceding segment."},
    {"waiting",
     "One value of the flag makes readers that wait for their segments, the other readers that do not."},
    {"gearing", "Readers are made at every gearing: standing, backwards, fast."},
    {"unknown", "A reader of a material that the host does not know is refused, or reads as silence."},
    {"status",
     "A requested segment becomes ready on another thread, and its samples are there when it does."},
    {"events",
     "A requested segment has an event that happens when the request completes; handles of it are counted."},
    {"underruns", "A late sample that is not waited for is silence, and is counted once."},
    {"holders",
     "Copies of readers and handles keep the samples; when the last one has gone, the samples go."},
    {"section",
     "A section of the equaliser returns its last result as often as it is asked, and no other section's."},
    {"curves",
     "The nodes of both gain curves are equally spaced, and each line ends where the next one begins."},
    {"levels-forwards",
     "Walking nodes forwards, a moving level never has 0 samples to go, and stays after the last node."},
    {"levels-backwards", "Walking nodes backwards, likewise, down to the first node."},
    {"together", "Readers on several threads find the same samples as one reader alone."},
    {"render", "The render library loads, renders what readers read, and lets a host's refusal pass."},
});

/// Where one of the first rules is broken, no other can be checked.
inline constexpr std::size_t firstRules = 2;

/// How many rules at the end stand on all the others: they are not checked where one is broken.
inline constexpr std::size_t lastRules = 2;

enum class Outcome { kept, broken, unchecked };

struct Verdict {
    Outcome outcome;
    /// What was seen, or why nothing was. Empty for a rule that is kept.
    std::string seen;
};

/// Whether a rule is one of the last, after so many broken ones.
constexpr bool waits(std::size_t rule, int broken) {
    return broken != 0 && rule + lastRules >= hostRules.size();
}
/// What is said of it.
inline Verdict afterOthers() {
    return {Outcome::unchecked, "Another rule is broken, on which this one stands."};
}

/// One line for the rule, and one more for what was seen.
std::string toText(const Rule& rule, const Verdict& verdict);

} // namespace audlmd
