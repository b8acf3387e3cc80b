// audlmd-host-check: checks a host that is a shared library.

#include "tools/hostcheck/HostCheck.hpp"
#include "tools/hostcheck/Rules.hpp"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <dlfcn.h>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using audlmd::hostRules;
using audlmd::Outcome;
using audlmd::Verdict;

constexpr unsigned int secondsPerRule = 20;

constexpr std::string_view help =
    "audlmd-host-check HOST.so   checks a host rule by rule: docs/hosts.md\n"
    "audlmd-host-check --list    lists the rules\n"
    "Exits with 0 if no rule is broken, with 1 if one is, with 2 if the host cannot be opened.\n";

/// The text with the name of a symbol as it stands in the source.
std::string readable(std::string text) {
    const std::size_t begin = text.find("_Z");
    if (begin == std::string::npos)
        return text;
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(text.substr(begin).c_str(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.replace(begin, std::string::npos, name.get()) : text;
}

/// In a process of its own, because a host may crash. The rules are a library that lacks the host's
/// operations: it finds those of the host, which is loaded first and for all to see.
Verdict checkHere(const char* host, std::size_t rule) {
    if (dlopen(host, RTLD_NOW | RTLD_GLOBAL) == nullptr)
        return {Outcome::broken, readable(dlerror())};
    void* const rules = dlopen(AUDLMD_HOST_CHECK_LIBRARY, RTLD_NOW);
    if (rules == nullptr)
        return {Outcome::broken, "The host lacks an operation. " + readable(dlerror())};
    const auto check = reinterpret_cast<Verdict (*)(std::size_t)>(dlsym(rules, "_ZN6audlmd9checkRuleEm"));
    return check(rule);
}

/// Returns whether the rule is kept, or cannot be checked.
bool reportRule(const char* host, std::size_t rule) {
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        alarm(secondsPerRule);
        const Verdict verdict = checkHere(host, rule);
        std::cout << toText(hostRules[rule], verdict) << std::flush;
        // Without the host's destructors, which are no rule.
        _exit(verdict.outcome == Outcome::broken);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) < 0)
        std::cout << toText(hostRules[rule],
                            {Outcome::broken, std::string("No process: ") + std::strerror(errno)});
    else if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        const std::string seen =
            signal == SIGALRM
                ? "The check has not ended after " + std::to_string(secondsPerRule) + " seconds."
                : std::string("The host crashed: ") + strsignal(signal) + ".";
        std::cout << toText(hostRules[rule], {Outcome::broken, seen});
    }
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

int checkHost(const char* host) {
    int broken = 0;
    for (std::size_t rule = 0; rule < hostRules.size(); ++rule) {
        if (audlmd::waits(rule, broken))
            std::cout << toText(hostRules[rule], audlmd::afterOthers());
        else
            broken += !reportRule(host, rule);
        if (broken != 0 && rule < audlmd::firstRules)
            break;
    }
    if (broken == 0)
        std::cout << "No rule is broken.\n";
    else
        std::cout << broken << (broken == 1 ? " rule is broken.\n" : " rules are broken.\n");
    return broken != 0;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::string_view argument = argumentCount == 2 ? arguments[1] : "";
    if (argument == "--list") {
        for (const audlmd::Rule& rule : hostRules)
            std::cout << rule.name << ": " << rule.sentence << "\n";
        return 0;
    }
    if (argument.empty() || argument.starts_with("-")) {
        (argument == "--help" ? std::cout : std::cerr) << help;
        return argument == "--help" ? 0 : 2;
    }
    if (access(arguments[1], R_OK) != 0) {
        std::cerr << "audlmd-host-check: " << arguments[1] << ": " << std::strerror(errno)
                  << ": give the host's shared library\n";
        return 2;
    }
    // Without a slash the system's folders would be searched.
    const std::string host =
        argument.find('/') == std::string_view::npos ? "./" + std::string(argument) : arguments[1];
    return checkHost(host.c_str());
}
