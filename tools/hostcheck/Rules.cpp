#include "tools/hostcheck/Rules.hpp"

namespace audlmd {

std::string toText(const Rule& rule, const Verdict& verdict) {
    constexpr std::array words{"kept     ", "broken   ", "unchecked"};
    std::string text = words[static_cast<std::size_t>(verdict.outcome)];
    text.append("  ").append(rule.name).append(": ").append(rule.sentence).append("\n");
    if (!verdict.seen.empty())
        text.append("           ").append(verdict.seen).append("\n");
    return text;
}

} // namespace audlmd
